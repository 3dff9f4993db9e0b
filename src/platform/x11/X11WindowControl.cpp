#include "platform/x11/X11WindowControl.h"

#include "platform/x11/X11WindowHandle.h"
#include "platform/x11/X11WindowReader.h"
#include "platform/x11/XcbConnection.h"

namespace gf {

std::optional<std::vector<std::shared_ptr<WindowHandle>>> X11WindowControl::windowsOfProcess(
    std::int32_t pid) {
    if (connection_.hasError()) {
        return std::nullopt;
    }
    const std::vector<xcb_window_t> windows = reader_.stacking().applicationWindows();
    const std::vector<std::optional<std::int32_t>> pids = reader_.properties().ownerPids(windows);
    std::vector<StackedWindow> owned;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (pids[i] == pid) {
            owned.push_back({windows[i], windows[i], false});
        }
    }
    const std::vector<int> layers = reader_.properties().layersOf(owned);
    if (connection_.hasError()) {
        return std::nullopt;
    }
    const bool managedByEwmh = reader_.root().hasEwmhWindowManager();
    std::vector<std::shared_ptr<WindowHandle>> handles;
    for (std::size_t i = 0; i < owned.size(); ++i) {
        if (layers[i] >= WindowLayer::normal && layers[i] < WindowLayer::dock) {
            handles.push_back(std::make_shared<X11WindowHandle>(
                connection_, reader_, restackPolicy_, owned[i].client, managedByEwmh));
        }
    }
    return handles;
}

std::shared_ptr<WindowHandle> X11WindowControl::windowWithNumber(std::int32_t,
                                                                 std::uint32_t windowNumber) {
    if (connection_.hasError() || windowNumber == XCB_WINDOW_NONE) {
        return nullptr;
    }
    return std::make_shared<X11WindowHandle>(connection_, reader_, restackPolicy_, windowNumber,
                                             reader_.root().hasEwmhWindowManager());
}

std::optional<bool> X11WindowControl::applicationAttribute(std::int32_t, std::string_view) {
    return std::nullopt;
}

bool X11WindowControl::setApplicationAttribute(std::int32_t, std::string_view, bool) {
    return false;
}

}  // namespace gf
