#pragma once

#include "platform/GrantService.h"

namespace gf {

// Asks for both grants and writes what the desktop answered to the
// diagnostic log; returns whether windows may be read and changed.
bool requestPermissions(GrantService& grants);
// Asks as requestPermissions does and shows where to give the grants when
// windows still cannot be read: the Accessibility row's "Grant Access".
void requestAccessibility(GrantService& grants);
// Asks for the input grant and shows where to give it when it is missing.
void requestInputMonitoring(GrantService& grants);
// Shows the user where the grants come from (on X11: the session type).
void openInputMonitoringSettings(GrantService& grants);

}  // namespace gf
