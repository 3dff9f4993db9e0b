#include "platform/x11/X11FrameGeometryReader.h"

#include "platform/x11/X11Stacking.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"
#include "platform/x11/XcbReplyValues.h"

namespace gf {

namespace {

constexpr std::uint32_t kExtentsLength = 4;

// The extents a property declares; nullopt when it declares none, whether missing or short.
std::optional<FrameExtents> extentsIn(const xcb_get_property_reply_t* reply) {
    return FrameExtents::fromProperty(propertyValues32(reply));
}

}  // namespace

X11FrameGeometryReader::X11FrameGeometryReader(const XcbConnection& connection,
                                               const X11Stacking& stacking)
    : connection_(connection), stacking_(stacking) {}

X11FrameGeometryReader::Cookies X11FrameGeometryReader::request(const StackedWindow& window) const {
    xcb_connection_t* c = connection_.get();
    const X11Atoms& atoms = connection_.atoms();
    return {
        window.frame != window.client,
        xcb_get_geometry(c, window.client),
        xcb_translate_coordinates(c, window.client, connection_.root(), 0, 0),
        xcb_get_geometry(c, window.frame),
        requestProperty(c, window.client, atoms.netFrameExtents, XCB_ATOM_CARDINAL, kExtentsLength),
        requestProperty(c, window.client, atoms.gtkFrameExtents, XCB_ATOM_CARDINAL,
                        kExtentsLength)};
}

std::optional<X11FrameGeometry> X11FrameGeometryReader::collect(const Cookies& cookies) const {
    auto shadow = xcbReply(connection_.get(), xcb_get_property_reply, cookies.shadow);
    return collect(cookies, shadow.get());
}

std::optional<X11FrameGeometry> X11FrameGeometryReader::collect(
    const Cookies& cookies, const xcb_get_property_reply_t* shadow) const {
    xcb_connection_t* c = connection_.get();
    auto geometry = xcbReply(c, xcb_get_geometry_reply, cookies.clientGeometry);
    auto origin = xcbReply(c, xcb_translate_coordinates_reply, cookies.clientOrigin);
    auto frameGeometry = xcbReply(c, xcb_get_geometry_reply, cookies.frameGeometry);
    auto decorations = xcbReply(c, xcb_get_property_reply, cookies.decorations);
    if (!geometry || !origin || !frameGeometry || !decorations || shadow == nullptr) {
        return std::nullopt;  // the window vanished
    }
    X11FrameGeometry result;
    result.border = geometry->border_width;
    result.client = {static_cast<double>(origin->dst_x), static_cast<double>(origin->dst_y),
                     static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
    result.shadow = extentsIn(shadow).value_or(FrameExtents{});
    // Decorations belong to a frame: a client that is the root's child has none, whatever
    // _NET_FRAME_EXTENTS says, since a window manager that died leaves the property behind.
    if (cookies.framed) {
        const Rect frame = outerRectangle(*frameGeometry);
        result.frameWindow = frame;
        const Rect clientWithBorder{
            result.client.x - result.border, result.client.y - result.border,
            result.client.width + 2 * result.border, result.client.height + 2 * result.border};
        // Without declared extents the frame window's own edges tell the decorations.
        result.decorations =
            extentsIn(decorations.get()).value_or(FrameExtents::between(frame, clientWithBorder));
    }
    return result;
}

void X11FrameGeometryReader::discard(const Cookies& cookies) const {
    xcb_connection_t* c = connection_.get();
    for (unsigned int sequence :
         {cookies.clientGeometry.sequence, cookies.clientOrigin.sequence,
          cookies.frameGeometry.sequence, cookies.decorations.sequence, cookies.shadow.sequence}) {
        xcb_discard_reply(c, sequence);
    }
}

std::optional<Rect> X11FrameGeometryReader::outerFrame(xcb_window_t client) const {
    const std::optional<xcb_window_t> frame = stacking_.frameWindowOf(client);
    if (!frame) {
        return std::nullopt;  // the window vanished
    }
    const auto geometry = collect(request({*frame, client, false}));
    if (!geometry) {
        return std::nullopt;
    }
    return geometry->visibleFrame();
}

}  // namespace gf
