#include "platform/x11/X11GrantService.h"

#include <cstdlib>
#include <iostream>
#include <utility>

namespace gf {

X11GrantService::X11GrantService(bool inputExtensionsPresent, EnvironmentLookup environment)
    : inputExtensionsPresent_(inputExtensionsPresent), environment_(std::move(environment)) {}

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
    return inputExtensionsPresent_ && !isWaylandSession(environment_);
}

bool X11GrantService::requestAccessibility() {
    return isAccessibilityGranted();
}

bool X11GrantService::requestInputMonitoring() {
    return isInputMonitoringGranted();
}

void X11GrantService::showWhereToGrant() {
    std::cerr << "Glimmerfold needs an X11 session: log out and choose an X11 (Xorg) session "
                 "at the login screen.\n";
}

}  // namespace gf
