#pragma once

#include "platform/GrantService.h"

namespace gf::test {

// Both grants present unless a test takes them away. A request grants
// nothing by itself: the user does that, i.e. the test.
class FakeGrants final : public GrantService {
  public:
    bool isAccessibilityGranted() override { return accessibility_; }
    bool isInputMonitoringGranted() override { return inputMonitoring_; }
    bool requestAccessibility() override {
        ++accessibilityRequests_;
        return accessibility_;
    }
    bool requestInputMonitoring() override {
        ++inputMonitoringRequests_;
        return inputMonitoring_;
    }
    void showWhereToGrant() override { ++whereToGrantShown_; }

    void setAccessibilityGranted(bool granted) { accessibility_ = granted; }
    void setInputMonitoringGranted(bool granted) { inputMonitoring_ = granted; }
    int accessibilityRequests() const { return accessibilityRequests_; }
    int inputMonitoringRequests() const { return inputMonitoringRequests_; }
    int whereToGrantShown() const { return whereToGrantShown_; }

  private:
    bool accessibility_ = true;
    bool inputMonitoring_ = true;
    int accessibilityRequests_ = 0;
    int inputMonitoringRequests_ = 0;
    int whereToGrantShown_ = 0;
};

}  // namespace gf::test
