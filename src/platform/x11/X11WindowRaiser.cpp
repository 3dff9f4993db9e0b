#include "platform/x11/X11WindowRaiser.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/WindowDescription.h"
#include "platform/x11/X11RestackPolicy.h"
#include "platform/x11/X11WindowReader.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

// Client messages from a pager or similar tool carry source indication 2,
// which window managers obey without focus-stealing checks.
constexpr std::uint32_t kSourceIndicationTool = 2;

}  // namespace

X11WindowRaiser::X11WindowRaiser(const XcbConnection& connection, const X11WindowReader& reader,
                                 X11RestackPolicy& restackPolicy, xcb_window_t client,
                                 bool managedByEwmh)
    : connection_(connection),
      reader_(reader),
      restackPolicy_(restackPolicy),
      client_(client),
      managedByEwmh_(managedByEwmh) {}

bool X11WindowRaiser::raise() {
    auto stacked = reader_.stacking().stackedWindows();
    if (!stacked) {
        return false;
    }
    auto self = std::find_if(stacked->begin(), stacked->end(), [this](const StackedWindow& window) {
        return window.client == client_;
    });
    if (self == stacked->end()) {
        // Not on the screen (or gone): nothing to compare the result with.
        return reader_.stacking().exists(client_) && requestRaise();
    }
    // Windows in front that share this window's layer or a lower one are the
    // ones a successful raise must put behind it; docks and menus stay in front.
    std::vector<StackedWindow> inFrontAndSelf(stacked->begin(), self + 1);
    const std::vector<int> layers = reader_.properties().layersOf(inFrontAndSelf);
    const int ownLayer = layers.back();
    std::vector<xcb_window_t> blockers;
    for (std::size_t i = 0; i + 1 < inFrontAndSelf.size(); ++i) {
        if (layers[i] <= ownLayer) {
            blockers.push_back(inFrontAndSelf[i].frame);
        }
    }
    if (blockers.empty()) {
        return true;  // already in front
    }
    const std::optional<xcb_window_t> windowManager =
        managedByEwmh_ ? reader_.root().ewmhWindowManager() : std::nullopt;
    // Without a window manager the server restacks at once, and every window manager restacks
    // the window that has the focus.
    if (!windowManager || reader_.root().activeWindow() == client_) {
        return requestRaise();
    }
    switch (restackPolicy_.verdictFor(*windowManager)) {
        case X11RestackPolicy::Verdict::ignored:
            return activate();
        case X11RestackPolicy::Verdict::honoured:
            return requestRaise();
        case X11RestackPolicy::Verdict::unknown:
            break;
    }
    if (!requestRaise()) {
        return false;
    }
    restackPolicy_.watch(
        *windowManager,
        [&stacking = reader_.stacking(), frame = self->frame, blockers] {
            return stacking.isInFrontOf(frame, blockers);
        },
        [&connection = connection_, client = client_] { activate(connection, client, true); });
    return true;
}

bool X11WindowRaiser::requestRaise() {
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

bool X11WindowRaiser::activate() {
    return activate(connection_, client_, managedByEwmh_);
}

bool X11WindowRaiser::activate(const XcbConnection& connection, xcb_window_t client,
                               bool managedByEwmh) {
    if (managedByEwmh) {
        return connection.sendToWindowManager(
            client, connection.atoms().netActiveWindow,
            {kSourceIndicationTool, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
    }
    xcb_connection_t* c = connection.get();
    const std::uint32_t mode = XCB_STACK_MODE_ABOVE;
    auto restack = xcb_configure_window_checked(c, client, XCB_CONFIG_WINDOW_STACK_MODE, &mode);
    auto focus = xcb_set_input_focus_checked(c, XCB_INPUT_FOCUS_PARENT, client, XCB_CURRENT_TIME);
    const bool restacked = xcbSucceeded(c, restack);
    return xcbSucceeded(c, focus) && restacked;
}

}  // namespace gf
