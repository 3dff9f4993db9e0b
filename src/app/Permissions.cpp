#include "app/Permissions.h"

#include <string>

#include "app/HelpPage.h"
#include "model/DebugLog.h"

namespace gf {

namespace {

std::string answer(bool value) {
    return value ? "true" : "false";
}

// The X11 counterpart of asking for post-event access: XKB and XInput 2
// must answer, in an X11 (not Wayland) session.
bool requestInputAccessAndLog(GrantService& grants) {
    const bool granted = grants.requestInputMonitoring();
    debugLog("XInput2 event access returned: " + answer(granted));
    return granted;
}

}  // namespace

bool requestPermissions(GrantService& grants) {
    debugLog("Requesting post event access (X11 session)...");
    requestInputAccessAndLog(grants);
    const bool trusted = grants.requestAccessibility();
    debugLog("X11 window management access returned: " + answer(trusted));
    return trusted;
}

void requestAccessibility(GrantService& grants) {
    if (!requestPermissions(grants)) {
        openInputMonitoringSettings(grants);
    }
}

void requestInputMonitoring(GrantService& grants) {
    if (!requestInputAccessAndLog(grants)) {
        openInputMonitoringSettings(grants);
    }
}

void openInputMonitoringSettings(GrantService& grants) {
    grants.showWhereToGrant();
    openHelpPage();
}

}  // namespace gf
