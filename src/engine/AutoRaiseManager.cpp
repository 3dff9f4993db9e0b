#include "engine/AutoRaiseManager.h"

#include <chrono>
#include <cmath>
#include <optional>
#include <utility>

#include "engine/LocatedWindow.h"
#include "engine/WindowLocation.h"

namespace gf {

namespace {

std::chrono::milliseconds delayFromSeconds(double seconds) {
    if (!std::isfinite(seconds) || seconds <= 0) {
        return std::chrono::milliseconds{0};
    }
    return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace

AutoRaiseManager::AutoRaiseManager(Settings& settings, Platform& platform)
    : settings_(settings), platform_(platform) {}

AutoRaiseManager::~AutoRaiseManager() {
    stop();
}

void AutoRaiseManager::start() {
    if (monitor_) {
        return;
    }
    monitor_ = platform_.input.addPointerMovedMonitor(
        [this](std::uint64_t flags) { handleMouseMoved(flags); });
}

void AutoRaiseManager::stop() {
    cancelPendingRaise();
    monitor_.reset();
    lastWindowID_ = 0;
}

void AutoRaiseManager::handleMouseMoved(std::uint64_t flags) {
    if (!settings_.autoRaiseEnabled()) {
        return;
    }
    // lastWindowID is kept on purpose: pressing the keys later over the same
    // window does not raise it until the pointer has been elsewhere.
    const ModifierKeySet required = settings_.autoRaiseModifiers();
    if (!required.isEmpty() && !required.matches(flags)) {
        cancelPendingRaise();
        return;
    }

    // The delivered event may lag behind; the target is where the pointer is now.
    const Point pointer = platform_.input.currentPointerPosition().value_or(Point{});
    if (isStillOverTarget(pointer)) {
        return;
    }
    std::optional<LocatedWindow> located = locateWindowWithWindowServer(platform_, pointer);
    if (!located) {
        located = locateWindowWithWindowList(platform_, pointer);
    }
    if (!located) {
        cancelPendingRaise();
        lastWindowID_ = 0;
        return;
    }
    if (located->windowID == lastWindowID_) {
        return;
    }

    lastWindowID_ = located->windowID;
    cancelPendingRaise();
    const bool activateApplication = settings_.autoRaiseAllWindows();
    const std::chrono::milliseconds delay = delayFromSeconds(settings_.autoRaiseDelay());
    raiseTimer_ = platform_.mainThread.scheduleOnce(
        delay, [this, window = std::move(located->windowHandle), activateApplication,
                pid = located->pid] { raise(window, activateApplication, pid); });
}

// Nearly every motion stays over the window already chosen. One question to
// the window server tells; the full location, which also finds the window's
// application and handle, is only worth its cost when the answer changes.
bool AutoRaiseManager::isStillOverTarget(Point pointer) const {
    if (lastWindowID_ == 0) {
        return false;
    }
    const auto found = platform_.windowServer.windowAt(pointer);
    return found && found->windowNumber == lastWindowID_ && found->ownerPid &&
           isAcceptedLayer(found->layer, platform_.windowServer.dockLayer());
}

void AutoRaiseManager::raise(std::shared_ptr<WindowHandle> window, bool activateApplication,
                             std::int32_t pid) {
    if (window) {
        window->raise();
        window->makeMain();
    }
    if (activateApplication) {
        platform_.applications.activate(pid);
    }
}

void AutoRaiseManager::cancelPendingRaise() {
    if (raiseTimer_) {
        raiseTimer_->cancel();
        raiseTimer_.reset();
    }
}

}  // namespace gf
