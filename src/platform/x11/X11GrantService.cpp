#include "platform/x11/X11GrantService.h"

#include <cstdlib>
#include <iostream>
#include <utility>

namespace gf {

X11GrantService::X11GrantService(InputExtensions present, EnvironmentLookup environment)
    : extensions_(present), environment_(std::move(environment)) {}

X11GrantService::X11GrantService(bool inputExtensionsPresent, EnvironmentLookup environment)
    : X11GrantService(InputExtensions{inputExtensionsPresent, inputExtensionsPresent},
                      std::move(environment)) {}

std::optional<std::string> X11GrantService::processEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) {
        return std::nullopt;
    }
    return std::string(value);
}

bool X11GrantService::isWaylandSession(const EnvironmentLookup& environment) {
    const std::optional<std::string> waylandDisplay = environment("WAYLAND_DISPLAY");
    const std::optional<std::string> sessionType = environment("XDG_SESSION_TYPE");
    return (waylandDisplay && !waylandDisplay->empty()) || sessionType == "wayland";
}

bool X11GrantService::isAccessibilityGranted() {
    return !isWaylandSession(environment_);
}

bool X11GrantService::isInputMonitoringGranted() {
    return extensions_.keyboard && extensions_.input && !isWaylandSession(environment_);
}

bool X11GrantService::requestAccessibility() {
    return isAccessibilityGranted();
}

bool X11GrantService::requestInputMonitoring() {
    return isInputMonitoringGranted();
}

// Nothing can be asked for on X11, so whatever is missing stays missing until the session or
// the server changes; the sentence names which of the two it is.
std::string X11GrantService::whyUnavailable() {
    if (isWaylandSession(environment_)) {
        return "In a Wayland session Glimmerfold can neither see nor move other applications' "
               "windows: log out and choose an X11 (Xorg) session at the login screen.";
    }
    return missingExtensionsReason();
}

std::string X11GrantService::missingExtensionsReason() const {
    if (!extensions_.keyboard && !extensions_.input) {
        return "This X server offers neither XKEYBOARD nor XInput 2.1, which Glimmerfold needs to "
               "see the modifier keys and the pointer: run it on an X server that has both, as "
               "every current Xorg server does.";
    }
    if (!extensions_.keyboard) {
        return "This X server does not offer the XKEYBOARD extension, which Glimmerfold needs to "
               "see the modifier keys: run it on an X server that has it, as every current Xorg "
               "server does.";
    }
    if (!extensions_.input) {
        return "This X server does not offer XInput 2.1, which Glimmerfold needs to follow the "
               "pointer: run it on an X server that has it, as every current Xorg server does.";
    }
    return {};
}

void X11GrantService::showWhereToGrant() {
    const std::string reason = whyUnavailable();
    if (!reason.empty()) {
        std::cerr << reason << '\n';
    }
}

}  // namespace gf
