#include "platform/x11/X11WindowReader.h"

namespace gf {

X11WindowReader::X11WindowReader(const XcbConnection& connection)
    : properties_(connection),
      root_(connection, properties_),
      stacking_(connection, properties_, root_),
      frames_(connection, stacking_) {}

std::vector<WindowDescription> X11WindowReader::describe(
    const std::vector<StackedWindow>& windows) const {
    std::vector<X11FrameGeometryReader::Cookies> frameCookies;
    std::vector<xcb_get_property_cookie_t> classCookies;
    std::vector<xcb_window_t> clients;
    frameCookies.reserve(windows.size());
    classCookies.reserve(windows.size());
    clients.reserve(windows.size());
    for (const StackedWindow& window : windows) {
        frameCookies.push_back(frames_.request(window));
        classCookies.push_back(properties_.requestWindowClass(window.client));
        clients.push_back(window.client);
    }
    // Everything is asked before the first answer is awaited: one round trip.
    const X11WindowProperties::LayerCookies layerCookies = properties_.requestLayers(windows);
    const X11WindowProperties::PidCookies pidCookies = properties_.requestOwnerPids(clients);
    const std::vector<int> layers = properties_.collectLayers(layerCookies, windows);
    const std::vector<std::optional<std::int32_t>> pids = properties_.collectOwnerPids(pidCookies);

    std::vector<WindowDescription> descriptions;
    descriptions.reserve(windows.size());
    for (std::size_t i = 0; i < windows.size(); ++i) {
        WindowDescription description;
        description.windowNumber = windows[i].client;
        description.ownerPid = pids[i];
        description.layer = layers[i];
        if (auto geometry = frames_.collect(frameCookies[i])) {
            description.bounds = geometry->visibleFrame();
        }
        description.applicationIdentifier = properties_.collectWindowClass(classCookies[i]);
        descriptions.push_back(description);
    }
    return descriptions;
}

}  // namespace gf
