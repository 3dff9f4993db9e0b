#include "engine/EventTapManager.h"

#include <utility>

#include "engine/WindowLocation.h"
#include "model/DebugLog.h"

namespace gf {

namespace {

bool isInterruptionNotice(InputEventType type) {
    return static_cast<std::uint32_t>(type) >=
           static_cast<std::uint32_t>(InputEventType::tapDisabledByTimeout);
}

// An empty combination would otherwise be "held" all the time.
bool isCombinationHeld(const ModifierKeySet& keys, std::uint64_t flags) {
    return !keys.isEmpty() && keys.matches(flags);
}

}  // namespace

EventTapManager::EventTapManager(Settings& settings, Platform& platform)
    : settings_(settings),
      platform_(platform),
      dragSession_(std::make_unique<DragSession>(settings, platform_)) {
    // Switching off stops the window following the pointer at once, also when
    // the ticks read the pointer themselves rather than through this manager.
    dragSession_->setFollowingPointer(settings_.isEnabled());
    enabledChanged_ =
        QObject::connect(&settings_, &Settings::isEnabledChanged,
                         [this](bool enabled) { dragSession_->setFollowingPointer(enabled); });
}

EventTapManager::~EventTapManager() {
    QObject::disconnect(enabledChanged_);
    stop();
}

void EventTapManager::start() {
    if (eventTap_) {
        return;
    }
    eventTap_ =
        platform_.input.createEventTap([this](const InputEvent& event) { handleEvent(event); });
    if (!eventTap_) {
        debugLog(
            "[EventTap] FAILED to create event tap. Check that this is an X11 session whose "
            "server offers XKEYBOARD and XInput 2.1.");
        return;
    }
    eventTap_->setEnabled(true);
    debugLog("[EventTap] Created and enabled successfully.");
    startHealthCheckTimer();
}

void EventTapManager::stop() {
    healthCheckTimer_.reset();
    modifierWatchTimer_.reset();
    gestureCancelled_ = false;
    if (eventTap_) {
        eventTap_->setCancelKeyCaptured(false);
        eventTap_->setEnabled(false);
        eventTap_.reset();
    }
    dragSession_->end();
}

const InputEvent& EventTapManager::handleEvent(const InputEvent& event) {
    if (isInterruptionNotice(event.type)) {
        if (eventTap_) {
            eventTap_->setEnabled(true);
        }
        return event;
    }
    if (event.type == InputEventType::flagsChanged) {
        if (settings_.isEnabled()) {
            handleFlagsChanged(event);
        } else {
            dragSession_->noteModifiers(event.flags);
        }
        return event;
    }
    // Captured for the gesture in progress, so it is answered even while switched off: the
    // key reached no one else.
    if (event.type == InputEventType::cancelKeyPressed) {
        cancelGesture();
        return event;
    }
    if (!settings_.isEnabled()) {
        return event;
    }
    switch (event.type) {
        case InputEventType::mouseMoved:
        case InputEventType::leftMouseDragged:
            if (isGestureInProgress()) {
                dragSession_->setLatestMouse(event.location);
            }
            break;
        default:
            break;
    }
    return event;
}

void EventTapManager::handleFlagsChanged(const InputEvent& event) {
    const bool moveHeld = isCombinationHeld(settings_.moveModifiers(), event.flags);
    const bool resizeHeld = isCombinationHeld(settings_.resizeModifiers(), event.flags);
    const bool anyHeld = moveHeld || resizeHeld;

    // The gesture these keys end is gone before they are noted: keys held again for the next
    // gesture may read the same, and a tick must never take them for the ended one's. A gesture
    // they begin starts after, so that its first tick may already apply.
    if (isGestureInProgress() && !anyHeld) {
        endGesture();
    }
    dragSession_->noteModifiers(event.flags);
    if (gestureCancelled_) {
        if (!anyHeld) {
            gestureCancelled_ = false;
            modifierWatchTimer_.reset();
        }
        return;
    }
    // A gesture never changes kind: while one is running, either combination keeps it going.
    if (!isGestureInProgress() && anyHeld) {
        beginGesture(resizeHeld);
    }
}

bool EventTapManager::isHeld(const ModifierKeySet& keys, std::uint64_t flags) {
    for (const ModifierKey& key : keys.keys()) {
        const ModifierKey* row = ModifierKey::withName(key.name);
        if (row == nullptr || (flags & row->eventFlag) == 0) {
            return false;
        }
    }
    return true;
}

bool EventTapManager::isGestureInProgress() const {
    return dragSession_->isDragging() || dragSession_->isResizing();
}

void EventTapManager::beginGesture(bool resize) {
    // The flags event's own location may be stale; ask where the pointer is now.
    const Point mouse = platform_.input.currentPointerPosition().value_or(Point{});
    std::optional<LocatedWindow> located = locateWindowWithWindowServer(platform_, mouse);
    if (!located) {
        located = locateWindowWithWindowList(platform_, mouse);
    }
    if (!located) {
        return;
    }
    if (located->pid == platform_.ownPid) {
        return;
    }
    if (located->bundleIdentifier && settings_.isIgnored(*located->bundleIdentifier)) {
        return;
    }

    if (resize) {
        dragSession_->beginResize(located->windowHandle, located->pid, mouse);
    } else {
        dragSession_->beginMove(located->windowHandle, located->pid, mouse);
    }
    if (isGestureInProgress() && eventTap_) {
        // Pointer motion wakes us up only while a gesture needs it, and not at
        // all when the gesture's ticks read the pointer themselves.
        if (!dragSession_->samplesPointer()) {
            eventTap_->setPointerMotionWanted(true);
        }
        eventTap_->setCancelKeyCaptured(true);
    }
    startModifierWatchTimer();
}

void EventTapManager::endGesture() {
    dragSession_->end();
    modifierWatchTimer_.reset();
    releaseGestureInput();
}

// The watch goes on: it notices the keys let go when their release is missed.
void EventTapManager::cancelGesture() {
    if (!isGestureInProgress()) {
        return;
    }
    dragSession_->cancel();
    gestureCancelled_ = true;
    releaseGestureInput();
}

// Escape must never stay captured past its gesture: the user would lose it everywhere.
void EventTapManager::releaseGestureInput() {
    if (eventTap_) {
        eventTap_->setPointerMotionWanted(false);
        eventTap_->setCancelKeyCaptured(false);
    }
}

void EventTapManager::startHealthCheckTimer() {
    healthCheckTimer_ =
        platform_.mainThread.scheduleRepeating(healthCheckPeriod, [this] { checkTapHealth(); });
}

void EventTapManager::checkTapHealth() {
    if (eventTap_ && !eventTap_->isEnabled()) {
        eventTap_->setEnabled(true);
    }
}

void EventTapManager::startModifierWatchTimer() {
    modifierWatchTimer_ = platform_.mainThread.scheduleRepeating(
        modifierWatchPeriod, [this] { checkModifiersStillHeld(); });
}

void EventTapManager::checkModifiersStillHeld() {
    if (!isGestureInProgress() && !gestureCancelled_) {
        return;
    }
    const std::uint64_t flags = platform_.input.currentModifierFlags();
    const ModifierKeySet move = settings_.moveModifiers();
    const ModifierKeySet resize = settings_.resizeModifiers();
    const bool moveHeld = !move.isEmpty() && isHeld(move, flags);
    const bool resizeHeld = !resize.isEmpty() && isHeld(resize, flags);
    if (gestureCancelled_) {
        if (!moveHeld && !resizeHeld) {
            gestureCancelled_ = false;
            modifierWatchTimer_.reset();
        }
        return;
    }
    if (!moveHeld && !resizeHeld) {
        endGesture();
    } else if (dragSession_->hasLostWindow() && eventTap_) {
        // Nothing is left to cancel, so Escape goes back to the applications.
        eventTap_->setCancelKeyCaptured(false);
    }
}

}  // namespace gf
