#include "platform/x11/X11WindowHandle.h"

#include <xcb/xcbext.h>

#include <array>
#include <chrono>
#include <cmath>
#include <utility>

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

constexpr auto kReadAheadInterval = std::chrono::milliseconds(8);

constexpr std::uint32_t kNetWmStateRemove = 0;
constexpr std::uint32_t kNetWmStateAdd = 1;

std::int32_t toPixels(double value) {
    return static_cast<std::int32_t>(std::lround(value));
}

}  // namespace

X11WindowHandle::X11WindowHandle(const XcbConnection& connection, const X11WindowReader& reader,
                                 X11RestackPolicy& restackPolicy, xcb_window_t client,
                                 bool managedByEwmh)
    : connection_(connection),
      reader_(reader),
      client_(client),
      managedByEwmh_(managedByEwmh),
      configureWatch_(connection),
      raiser_(connection, reader, restackPolicy, client, managedByEwmh) {}

std::optional<Point> X11WindowHandle::position() {
    if (auto frame = reader_.frames().outerFrame(client_)) {
        return frame->origin();
    }
    return std::nullopt;
}

std::optional<Size> X11WindowHandle::size() {
    if (auto frame = reader_.frames().outerFrame(client_)) {
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
        reader_.frames().discard(*pendingRead_);
    }
}

std::optional<X11FrameGeometryReader::Cookies> X11WindowHandle::requestPlacement() {
    if (!frameWindow_) {
        frameWindow_ = reader_.stacking().frameWindowOf(client_);
        if (!frameWindow_) {
            return std::nullopt;  // the window vanished
        }
        configureWatch_.watch(*frameWindow_);
    }
    return reader_.frames().request({*frameWindow_, client_, false});
}

std::optional<X11FrameGeometry> X11WindowHandle::collectPlacement(
    const X11FrameGeometryReader::Cookies& cookies, const xcb_get_property_reply_t* shadow) {
    std::optional<X11FrameGeometry> geometry = reader_.frames().collect(cookies, shadow);
    configureWatch_.takeInEvents();
    if (!geometry) {
        // The window vanished, or the window manager framed it anew: the next
        // read looks for its frame again.
        frameWindow_.reset();
    }
    return geometry;
}

// A drag writes 125 times a second, and a write that waited for a read
// before it would cost a round trip, a wake-up and a little latency each time.
// So each write reads for the next one: the answer has long arrived when the
// next tick comes, and it is at most one tick old. Only the first write of a
// handle waits. A window that vanished is noticed one write later; that write
// went to a window manager that ignores requests for unknown windows.
std::optional<X11FrameGeometry> X11WindowHandle::placementForWrite() {
    std::lock_guard lock(readMutex_);
    if (pendingRead_) {
        // The shadow was asked last: once it is here, so is the rest.
        void* shadowReply = nullptr;
        xcb_generic_error_t* shadowError = nullptr;
        const bool arrived = xcb_poll_for_reply(connection_.get(), pendingRead_->shadow.sequence,
                                                &shadowReply, &shadowError) != 0;
        XcbPointer<xcb_get_property_reply_t> shadow(
            static_cast<xcb_get_property_reply_t*>(shadowReply));
        XcbPointer<xcb_generic_error_t> dropped(shadowError);
        if (arrived) {
            const X11FrameGeometryReader::Cookies cookies = *pendingRead_;
            pendingRead_.reset();
            knownPlacement_ = collectPlacement(cookies, shadow.get());
            if (!knownPlacement_) {
                return std::nullopt;
            }
        }
        // Not yet arrived: asked by the write just before (a resize writes
        // position and size in a row), whose placement serves this one too.
    } else if (!knownPlacement_) {
        const auto cookies = requestPlacement();
        if (!cookies) {
            return std::nullopt;
        }
        auto shadow = xcbReply(connection_.get(), xcb_get_property_reply, cookies->shadow);
        knownPlacement_ = collectPlacement(*cookies, shadow.get());
        if (!knownPlacement_) {
            return std::nullopt;
        }
    }
    return knownPlacement_;
}

// A move writes on every pointer motion, up to a thousand times a second, while what a write
// needs to know (decorations, shadow, the client's size) changes far more rarely. Reading it
// once per resize tick keeps a resize exact and spares the X server most of the reads.
void X11WindowHandle::readAheadAndFlush() {
    {
        std::lock_guard lock(readMutex_);
        const auto now = std::chrono::steady_clock::now();
        if (!pendingRead_ && now - lastReadAhead_ >= kReadAheadInterval) {
            pendingRead_ = requestPlacement();
            lastReadAhead_ = now;
        }
    }
    // One write to the socket for the request and the read behind it.
    connection_.flush();
}

bool X11WindowHandle::setPosition(Point topLeft) {
    const std::optional<X11FrameGeometry> current = placementForWrite();
    if (!current) {
        return false;
    }
    Size size = current->clientSize();
    {
        std::lock_guard lock(mutex_);
        size = requestedClientSize_.value_or(size);
    }
    const Point visibleTopLeft{std::round(topLeft.x), std::round(topLeft.y)};
    const Point frameTopLeft = current->decoratedCornerFor(visibleTopLeft);
    if (isRequestRepeated(frameTopLeft, size)) {
        std::lock_guard lock(readMutex_);
        heldBack_.reset();  // the hand came back to what was asked last
        return true;
    }
    // The next tick brings the latest position once the window manager has caught up.
    const auto now = X11ConfigureWatch::Clock::now();
    {
        std::lock_guard lock(readMutex_);
        if (!configureWatch_.mayRequest(now)) {
            heldBack_ = frameTopLeft;
            return true;
        }
        heldBack_.reset();
    }
    if (!requestFrame(frameTopLeft, size)) {
        return false;
    }
    {
        std::lock_guard lock(readMutex_);
        configureWatch_.noteRequest(now);
    }
    {
        std::lock_guard lock(mutex_);
        requestedFramePosition_ = frameTopLeft;
        lastRequest_ = {frameTopLeft, size};
    }
    readAheadAndFlush();
    return true;
}

void X11WindowHandle::settle() {
    std::optional<Point> heldBack;
    {
        std::lock_guard lock(readMutex_);
        heldBack = std::exchange(heldBack_, std::nullopt);
        if (heldBack) {
            configureWatch_.waitForAnswer();
        }
    }
    if (!heldBack) {
        return;
    }
    // The size goes along as it was asked last, which the held-back position must not undo.
    std::optional<Size> size;
    {
        std::lock_guard lock(mutex_);
        size = lastRequest_ ? std::optional(lastRequest_->second) : std::nullopt;
    }
    if (size && requestFrame(*heldBack, *size)) {
        std::lock_guard lock(mutex_);
        requestedFramePosition_ = heldBack;
        lastRequest_ = {*heldBack, *size};
        connection_.flush();
    }
}

// Sent even while the window manager is still busy with an earlier request, and even when it
// repeats the last one: it comes after them all, and nothing follows to correct it.
bool X11WindowHandle::restoreFrame(Rect frame) {
    const std::optional<X11FrameGeometry> current = placementForWrite();
    if (!current) {
        return false;
    }
    const Point frameTopLeft =
        current->decoratedCornerFor({std::round(frame.x), std::round(frame.y)});
    const Size client = current->clientSizeFor({std::round(frame.width), std::round(frame.height)});
    if (!requestFrame(frameTopLeft, client)) {
        return false;
    }
    {
        std::lock_guard lock(readMutex_);
        configureWatch_.noteRequest(X11ConfigureWatch::Clock::now());
        heldBack_.reset();  // superseded
    }
    {
        std::lock_guard lock(mutex_);
        requestedFramePosition_ = frameTopLeft;
        requestedClientSize_ = client;
        lastRequest_ = {frameTopLeft, client};
    }
    connection_.flush();
    return true;
}

// Without a window manager the state is only what the client wished for, and nothing stands in
// the way of moving the window.
WindowState X11WindowHandle::state() {
    if (!managedByEwmh_) {
        return {};
    }
    return reader_.properties().windowState(client_);
}

bool X11WindowHandle::setMaximized(bool horizontally, bool vertically) {
    if (!managedByEwmh_) {
        return false;
    }
    const X11Atoms& atoms = connection_.atoms();
    std::vector<std::uint32_t> added;
    std::vector<std::uint32_t> removed;
    (horizontally ? added : removed).push_back(atoms.netWmStateMaximizedHorz);
    (vertically ? added : removed).push_back(atoms.netWmStateMaximizedVert);
    forgetPlacement();
    bool sent = true;
    for (const auto& [action, properties] :
         {std::pair{kNetWmStateRemove, removed}, std::pair{kNetWmStateAdd, added}}) {
        if (properties.empty()) {
            continue;
        }
        sent = connection_.sendToWindowManager(
                   client_, atoms.netWmState,
                   {action, properties[0], properties.size() > 1 ? properties[1] : 0u,
                    kSourceIndicationTool, 0}) &&
               sent;
    }
    return sent;
}

void X11WindowHandle::forgetPlacement() {
    {
        std::lock_guard lock(readMutex_);
        if (pendingRead_) {
            reader_.frames().discard(*pendingRead_);
            pendingRead_.reset();
        }
        knownPlacement_.reset();
        heldBack_.reset();
    }
    std::lock_guard lock(mutex_);
    requestedFramePosition_.reset();
    requestedClientSize_.reset();
    lastRequest_.reset();
}

bool X11WindowHandle::setSize(Size size) {
    const std::optional<X11FrameGeometry> current = placementForWrite();
    if (!current) {
        return false;
    }
    // A resize writes the corner it keeps in place right before the size: a corner held back
    // goes with the size, in the same request.
    std::optional<Point> frameTopLeft;
    {
        std::lock_guard lock(readMutex_);
        frameTopLeft = std::exchange(heldBack_, std::nullopt);
    }
    if (!frameTopLeft) {
        std::lock_guard lock(mutex_);
        frameTopLeft = requestedFramePosition_;
    }
    if (!frameTopLeft) {
        frameTopLeft = current->decoratedFrame().origin();
    }
    const Size visibleSize{std::round(size.width), std::round(size.height)};
    const Size client = current->clientSizeFor(visibleSize);
    if (!isRequestRepeated(*frameTopLeft, client)) {
        if (!requestFrame(*frameTopLeft, client)) {
            return false;
        }
        std::lock_guard lock(mutex_);
        requestedFramePosition_ = *frameTopLeft;
        requestedClientSize_ = client;
        lastRequest_ = {*frameTopLeft, client};
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

// X11 knows no main window of an application apart from the one with the focus, and the focus
// stays where the user left it: the raise before has already put the window in front.
bool X11WindowHandle::makeMain() {
    return reader_.stacking().exists(client_);
}

bool X11WindowHandle::raise() {
    return raiser_.raise();
}

}  // namespace gf
