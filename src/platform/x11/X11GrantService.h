#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/GrantService.h"

namespace gf {

// On X11 nothing has to be granted: any client may observe input and move
// other windows. What can be missing is the X11 session itself, or one of the
// two input extensions on the X server. Under Wayland an X client sees neither
// the other applications' windows nor their input, so both grants count as
// missing there.
class X11GrantService final : public GrantService {
  public:
    using EnvironmentLookup = std::function<std::optional<std::string>(const char* name)>;

    // What the X server answered for the extensions input is observed through.
    struct InputExtensions {
        bool keyboard = false;  // XKEYBOARD
        bool input = false;     // XInput 2.1 or later
    };

    X11GrantService(InputExtensions present, EnvironmentLookup environment);
    // Both input extensions present, or both missing.
    X11GrantService(bool inputExtensionsPresent, EnvironmentLookup environment);

    static std::optional<std::string> processEnvironment(const char* name);
    static bool isWaylandSession(const EnvironmentLookup& environment);

    bool isAccessibilityGranted() override;
    bool isInputMonitoringGranted() override;
    bool requestAccessibility() override;
    bool requestInputMonitoring() override;
    std::string whyUnavailable() override;
    // Prints why on standard error, as one line.
    void showWhereToGrant() override;

  private:
    std::string missingExtensionsReason() const;

    InputExtensions extensions_;
    EnvironmentLookup environment_;
};

}  // namespace gf
