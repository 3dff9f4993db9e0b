#include "platform/x11/X11WindowHandle.h"

#include <xcb/xcbext.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

#include "platform/x11/X11WindowReader.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

// Client messages from a pager or similar tool carry source indication 2,
// which window managers obey without focus-stealing checks.
constexpr std::uint32_t kSourceIndicationTool = 2;
constexpr std::uint32_t kGravityNorthWest = 1;
constexpr std::uint32_t kMoveResizeAllFields = (1u << 8) | (1u << 9) | (1u << 10) | (1u << 11);

constexpr std::uint32_t kSizeHintsMinSize = 1u << 4;
constexpr std::uint32_t kSizeHintsMaxSize = 1u << 5;
constexpr std::uint32_t kSizeHintsFields = 18;

// How long a raise waits for the window manager to carry out a restack before
// it concludes that the request was ignored.
constexpr auto kRestackPollInterval = std::chrono::milliseconds(2);
constexpr int kRestackPolls = 50;

std::int32_t toPixels(double value) {
    return static_cast<std::int32_t>(std::lround(value));
}

}  // namespace

X11WindowHandle::X11WindowHandle(const XcbConnection& connection, const X11WindowReader& reader,
                                 xcb_window_t client, bool managedByEwmh)
    : connection_(connection), reader_(reader), client_(client), managedByEwmh_(managedByEwmh) {}

std::optional<Point> X11WindowHandle::position() {
    if (auto frame = reader_.outerFrame(client_)) {
        return frame->origin();
    }
    return std::nullopt;
}

std::optional<Size> X11WindowHandle::size() {
    if (auto frame = reader_.outerFrame(client_)) {
        return frame->size();
    }
    return std::nullopt;
}

std::optional<bool> X11WindowHandle::isSizeSettable() {
    xcb_connection_t* c = connection_.get();
    auto reply = xcbReply(c, xcb_get_property_reply,
                          xcb_get_property(c, 0, client_, XCB_ATOM_WM_NORMAL_HINTS,
                                           XCB_ATOM_WM_SIZE_HINTS, 0, kSizeHintsFields));
    if (!reply) {
        return std::nullopt;
    }
    if (reply->format != 32 || static_cast<std::size_t>(xcb_get_property_value_length(
                                   reply.get())) < 9 * sizeof(std::uint32_t)) {
        return true;  // no size hints: nothing fixes the size
    }
    const auto* hints = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    const std::uint32_t flags = hints[0];
    const bool bounded = (flags & kSizeHintsMinSize) != 0 && (flags & kSizeHintsMaxSize) != 0;
    const bool fixed = bounded && hints[5] == hints[7] && hints[6] == hints[8];
    return !fixed;
}

X11WindowHandle::~X11WindowHandle() {
    if (pendingRead_) {
        xcb_connection_t* c = connection_.get();
        xcb_discard_reply(c, pendingRead_->geometry.sequence);
        xcb_discard_reply(c, pendingRead_->origin.sequence);
        xcb_discard_reply(c, pendingRead_->frameGeometry.sequence);
        xcb_discard_reply(c, pendingRead_->extents.sequence);
    }
}

std::optional<X11WindowHandle::PlacementCookies> X11WindowHandle::requestPlacement() {
    if (!frameWindow_) {
        frameWindow_ = reader_.frameWindowOf(client_);
        if (!frameWindow_) {
            return std::nullopt;  // the window vanished
        }
    }
    xcb_connection_t* c = connection_.get();
    return PlacementCookies{xcb_get_geometry(c, client_),
                            xcb_translate_coordinates(c, client_, connection_.root(), 0, 0),
                            xcb_get_geometry(c, *frameWindow_),
                            reader_.requestFrameExtents(client_)};
}

std::optional<X11WindowHandle::Placement> X11WindowHandle::collectPlacement(
    const PlacementCookies& cookies, const xcb_get_property_reply_t* extents) {
    xcb_connection_t* c = connection_.get();
    auto geometry = xcbReply(c, xcb_get_geometry_reply, cookies.geometry);
    auto origin = xcbReply(c, xcb_translate_coordinates_reply, cookies.origin);
    auto frameGeometry = xcbReply(c, xcb_get_geometry_reply, cookies.frameGeometry);
    // Nobody reads this connection's events; errors of requests sent without
    // a check would otherwise pile up in its queue.
    connection_.discardQueuedEvents();
    const std::optional<FrameExtents> frameExtents = reader_.frameExtentsFrom(extents);
    if (!geometry || !origin || !frameGeometry || !frameExtents) {
        // The window vanished, or the window manager framed it anew: the next
        // read looks for its frame again.
        frameWindow_.reset();
        return std::nullopt;
    }
    // Without a window manager nothing frames the window; the extents a dead one set stay behind
    // on the client and would shift every write by its decorations.
    const FrameExtents decorations = managedByEwmh_ ? *frameExtents : FrameExtents{};
    const double border = geometry->border_width;
    Size client{static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
    if (*frameWindow_ != client_) {
        // The window manager may have resized the frame and not yet the client
        // inside: the size the frame shows is the one a position request keeps.
        const Rect visible =
            X11WindowReader::visibleFrame(*origin, *geometry, decorations, *frameGeometry);
        client = {visible.width - decorations.left - decorations.right - 2 * border,
                  visible.height - decorations.top - decorations.bottom - 2 * border};
    }
    return Placement{{client, border}, decorations};
}

// A drag writes 125 times a second, and a write that waited for a read
// before it would cost a round trip, a wake-up and a little latency each time.
// So each write reads for the next one: the answer has long arrived when the
// next tick comes, and it is at most one tick old. Only the first write of a
// handle waits. A window that vanished is noticed one write later; that write
// went to a window manager that ignores requests for unknown windows.
std::optional<X11WindowHandle::Placement> X11WindowHandle::placementForWrite() {
    std::lock_guard lock(readMutex_);
    if (pendingRead_) {
        // The extents were asked last: once they are here, so is the rest.
        void* extentsReply = nullptr;
        xcb_generic_error_t* extentsError = nullptr;
        const bool arrived = xcb_poll_for_reply(connection_.get(), pendingRead_->extents.sequence,
                                                &extentsReply, &extentsError) != 0;
        XcbPointer<xcb_get_property_reply_t> extents(
            static_cast<xcb_get_property_reply_t*>(extentsReply));
        XcbPointer<xcb_generic_error_t> dropped(extentsError);
        if (arrived) {
            const PlacementCookies cookies = *pendingRead_;
            pendingRead_.reset();
            knownPlacement_ = collectPlacement(cookies, extents.get());
            if (!knownPlacement_) {
                return std::nullopt;
            }
        }
        // Not yet arrived: asked by the write just before (a resize writes
        // position and size in a row), whose placement serves this one too.
    } else if (!knownPlacement_) {
        const std::optional<PlacementCookies> cookies = requestPlacement();
        if (!cookies) {
            return std::nullopt;
        }
        auto extents = xcbReply(connection_.get(), xcb_get_property_reply, cookies->extents);
        knownPlacement_ = collectPlacement(*cookies, extents.get());
        if (!knownPlacement_) {
            return std::nullopt;
        }
    }
    return knownPlacement_;
}

void X11WindowHandle::readAheadAndFlush() {
    {
        std::lock_guard lock(readMutex_);
        if (!pendingRead_) {
            pendingRead_ = requestPlacement();
        }
    }
    // One write to the socket for the request and the read behind it.
    connection_.flush();
}

bool X11WindowHandle::setPosition(Point topLeft) {
    const std::optional<Placement> current = placementForWrite();
    if (!current) {
        return false;
    }
    Size size = current->client.size;
    {
        std::lock_guard lock(mutex_);
        size = requestedClientSize_.value_or(size);
    }
    const Point frameTopLeft{std::round(topLeft.x), std::round(topLeft.y)};
    if (!isRequestRepeated(frameTopLeft, size)) {
        if (!requestFrame(frameTopLeft, size)) {
            return false;
        }
        std::lock_guard lock(mutex_);
        requestedFramePosition_ = frameTopLeft;
        lastRequest_ = {frameTopLeft, size};
    }
    readAheadAndFlush();
    return true;
}

bool X11WindowHandle::setSize(Size size) {
    const std::optional<Placement> current = placementForWrite();
    if (!current) {
        return false;
    }
    std::optional<Point> topLeft;
    {
        std::lock_guard lock(mutex_);
        topLeft = requestedFramePosition_;
    }
    if (!topLeft) {
        topLeft = position();
    }
    if (!topLeft) {
        return false;
    }
    // The frame's size is asked for; the client gets it minus the decorations
    // and its own border (which only unmanaged windows keep).
    const FrameExtents& extents = current->extents;
    const double border = 2 * current->client.borderWidth;
    const Size client{
        std::max(1.0, std::round(size.width) - extents.left - extents.right - border),
        std::max(1.0, std::round(size.height) - extents.top - extents.bottom - border)};
    if (!isRequestRepeated(*topLeft, client)) {
        if (!requestFrame(*topLeft, client)) {
            return false;
        }
        std::lock_guard lock(mutex_);
        requestedClientSize_ = client;
        lastRequest_ = {*topLeft, client};
    }
    readAheadAndFlush();
    return true;
}

// A resize writes its fixed corner before the size on every tick, and a
// resting pointer repeats the last position: asking the window manager again
// for what this handle asked last would only make it configure the window again.
bool X11WindowHandle::isRequestRepeated(Point frameTopLeft, Size clientSize) const {
    std::lock_guard lock(mutex_);
    return lastRequest_ && lastRequest_->first == frameTopLeft &&
           lastRequest_->second == clientSize;
}

bool X11WindowHandle::requestFrame(Point frameTopLeft, Size clientSize) {
    const std::int32_t x = toPixels(frameTopLeft.x);
    const std::int32_t y = toPixels(frameTopLeft.y);
    const std::int32_t width = toPixels(clientSize.width);
    const std::int32_t height = toPixels(clientSize.height);
    if (managedByEwmh_) {
        // North-west gravity places the frame's corner where asked (static
        // gravity would place the client's). Width and height always go along:
        // some window managers grow a window on every position-only request.
        // Not waited for: the placement read just before proved the window is
        // there, and the next tick asks again anyway.
        connection_.postToWindowManager(
            client_, connection_.atoms().netMoveResizeWindow,
            {kGravityNorthWest | kMoveResizeAllFields | (kSourceIndicationTool << 12),
             static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
             static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)});
        return true;
    }
    const std::array<std::uint32_t, 4> values{
        static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
        static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    return xcbSucceeded(
        connection_.get(),
        xcb_configure_window_checked(connection_.get(), client_,
                                     XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y |
                                         XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                                     values.data()));
}

bool X11WindowHandle::raise() {
    auto stacked = reader_.stackedWindows();
    if (!stacked) {
        return false;
    }
    auto self = std::find_if(stacked->begin(), stacked->end(), [this](const StackedWindow& window) {
        return window.client == client_;
    });
    if (self == stacked->end()) {
        // Not on the screen (or gone): nothing to compare the result with.
        return reader_.frameExtents(client_).has_value() && requestRaise();
    }
    // Windows in front that share this window's layer or a lower one are the
    // ones a successful raise must put behind it; docks and menus stay in front.
    std::vector<StackedWindow> inFrontAndSelf(stacked->begin(), self + 1);
    const std::vector<int> layers = reader_.layersOf(inFrontAndSelf);
    const int ownLayer = layers.back();
    std::vector<xcb_window_t> blockers;
    for (std::size_t i = 0; i + 1 < inFrontAndSelf.size(); ++i) {
        if (layers[i] <= ownLayer) {
            blockers.push_back(inFrontAndSelf[i].frame);
        }
    }
    if (!requestRaise()) {
        return false;
    }
    if (blockers.empty() || waitUntilAbove(self->frame, blockers)) {
        return true;
    }
    // Some window managers ignore restack requests for windows without focus;
    // activation raises the window there, at the cost of focusing it.
    return activate();
}

bool X11WindowHandle::requestRaise() {
    if (managedByEwmh_) {
        return connection_.sendToWindowManager(
            client_, connection_.atoms().netRestackWindow,
            {kSourceIndicationTool, XCB_WINDOW_NONE, XCB_STACK_MODE_ABOVE, 0, 0});
    }
    const std::uint32_t mode = XCB_STACK_MODE_ABOVE;
    return xcbSucceeded(connection_.get(),
                        xcb_configure_window_checked(connection_.get(), client_,
                                                     XCB_CONFIG_WINDOW_STACK_MODE, &mode));
}

bool X11WindowHandle::waitUntilAbove(xcb_window_t frame,
                                     const std::vector<xcb_window_t>& others) const {
    xcb_connection_t* c = connection_.get();
    for (int poll = 0; poll < kRestackPolls; ++poll) {
        auto tree = xcbReply(c, xcb_query_tree_reply, xcb_query_tree(c, connection_.root()));
        if (!tree) {
            return false;
        }
        const xcb_window_t* begin = xcb_query_tree_children(tree.get());
        const xcb_window_t* end = begin + xcb_query_tree_children_length(tree.get());
        const xcb_window_t* own = std::find(begin, end, frame);
        if (own == end) {
            return false;
        }
        // Children are listed bottom to top: every other window must come first.
        const bool above = std::none_of(own + 1, end, [&others](xcb_window_t window) {
            return std::find(others.begin(), others.end(), window) != others.end();
        });
        if (above) {
            return true;
        }
        std::this_thread::sleep_for(kRestackPollInterval);
    }
    return false;
}

bool X11WindowHandle::makeMain() {
    return reader_.frameExtents(client_).has_value() && activate();
}

bool X11WindowHandle::activate() {
    if (managedByEwmh_) {
        return connection_.sendToWindowManager(
            client_, connection_.atoms().netActiveWindow,
            {kSourceIndicationTool, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
    }
    xcb_connection_t* c = connection_.get();
    const std::uint32_t mode = XCB_STACK_MODE_ABOVE;
    auto restack = xcb_configure_window_checked(c, client_, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
    auto focus = xcb_set_input_focus_checked(c, XCB_INPUT_FOCUS_PARENT, client_, XCB_CURRENT_TIME);
    const bool restacked = xcbSucceeded(c, restack);
    return xcbSucceeded(c, focus) && restacked;
}

}  // namespace gf
