#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/GrantService.h"

namespace gf {

// On X11 nothing has to be granted: any client may observe input and move
// other windows. What can be missing is the X11 session itself. Under
// Wayland an X client sees neither the other applications' windows nor their
// input, so both grants count as missing there.
class X11GrantService final : public GrantService {
  public:
    using EnvironmentLookup = std::function<std::optional<std::string>(const char* name)>;

    // inputExtensionsPresent: XKB and XInput 2 answered on the connection.
    X11GrantService(bool inputExtensionsPresent, EnvironmentLookup environment);

    static std::optional<std::string> processEnvironment(const char* name);
    static bool isWaylandSession(const EnvironmentLookup& environment);

    bool isAccessibilityGranted() override;
    bool isInputMonitoringGranted() override;
    bool requestAccessibility() override;
    bool requestInputMonitoring() override;
    void showWhereToGrant() override;

  private:
    bool inputExtensionsPresent_;
    EnvironmentLookup environment_;
};

}  // namespace gf
