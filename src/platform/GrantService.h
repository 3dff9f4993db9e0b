#pragma once

#include <string>

namespace gf {

// The two grants the engine needs: one to read and change other applications'
// windows ("Accessibility"), one to observe the keyboard and pointer
// ("Input Monitoring"). Checks never prompt; requests may.
class GrantService {
  public:
    virtual ~GrantService() = default;

    virtual bool isAccessibilityGranted() = 0;
    virtual bool isInputMonitoringGranted() = 0;

    // Each asks for the grant and answers whether it is now present.
    virtual bool requestAccessibility() = 0;
    virtual bool requestInputMonitoring() = 0;

    // When a missing grant cannot be had in this session at all, one sentence saying why and
    // what to do instead; empty while asking may still get it.
    virtual std::string whyUnavailable() { return {}; }

    // Shows the user where the grants are given.
    virtual void showWhereToGrant() = 0;
};

}  // namespace gf
