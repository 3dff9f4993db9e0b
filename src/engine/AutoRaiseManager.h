#pragma once

#include <cstdint>
#include <memory>

#include "model/Settings.h"
#include "platform/MonitorToken.h"
#include "platform/Platform.h"
#include "platform/Timer.h"
#include "platform/WindowHandle.h"

namespace gf {

// Brings the window under the pointer to the front once the pointer has rested
// on it for the configured delay, optionally only while given keys are held.
// Lives on the main thread; subscribes to pointer motion only while started.
class AutoRaiseManager {
  public:
    AutoRaiseManager(Settings& settings, Platform& platform);
    ~AutoRaiseManager();

    AutoRaiseManager(const AutoRaiseManager&) = delete;
    AutoRaiseManager& operator=(const AutoRaiseManager&) = delete;

    void start();
    // Cancels a pending raise, unsubscribes from pointer motion and forgets the last target.
    void stop();

    void handleMouseMoved(std::uint64_t flags);
    void raise(std::shared_ptr<WindowHandle> window, bool activateApplication, std::int32_t pid);

    // The window most recently chosen as target; 0 when none.
    std::uint32_t lastWindowID() const { return lastWindowID_; }
    bool isStarted() const { return monitor_ != nullptr; }

  private:
    bool isStillOverTarget(Point pointer) const;
    void cancelPendingRaise();

    Settings& settings_;
    Platform platform_;
    std::unique_ptr<MonitorToken> monitor_;
    std::unique_ptr<Timer> raiseTimer_;
    std::uint32_t lastWindowID_ = 0;
};

}  // namespace gf
