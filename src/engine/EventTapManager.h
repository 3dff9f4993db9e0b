#pragma once

#include <QMetaObject>

#include <chrono>
#include <cstdint>
#include <memory>

#include "engine/DragSession.h"
#include "model/ModifierKeySet.h"
#include "model/Settings.h"
#include "platform/EventTap.h"
#include "platform/InputEvent.h"
#include "platform/Platform.h"
#include "platform/Timer.h"

namespace gf {

// The engine's entry point: observes modifier changes and pointer motion for
// the whole desktop, starts a move or resize gesture on the window under the
// pointer when a configured combination becomes held, and ends it when the
// combination is let go. Escape during a gesture cancels it: the window goes
// back as it was, and nothing more happens until the keys are let go. Escape
// is captured only while a gesture runs. Lives on the main thread.
class EventTapManager {
  public:
    static constexpr std::chrono::milliseconds healthCheckPeriod{5000};
    static constexpr std::chrono::milliseconds modifierWatchPeriod{150};

    EventTapManager(Settings& settings, Platform& platform);
    ~EventTapManager();

    EventTapManager(const EventTapManager&) = delete;
    EventTapManager& operator=(const EventTapManager&) = delete;

    // Installs the input stream; does nothing while one is installed. When the
    // stream cannot be created the manager stays stopped and a later call tries again.
    void start();
    // Removes the stream and both timers and ends any gesture. Harmless when stopped.
    void stop();

    // Whether an input stream is installed; after start, its absence means the
    // desktop does not let us observe input.
    bool hasEventTap() const { return eventTap_ != nullptr; }

    DragSession& dragSession() { return *dragSession_; }
    const DragSession& dragSession() const { return *dragSession_; }

    // The stream's callback. Observes only: gives back the event it received.
    const InputEvent& handleEvent(const InputEvent& event);
    void handleFlagsChanged(const InputEvent& event);

    // Whether every key of the set is down in the flags, each key's bit looked up by its name in
    // the modifier key table.
    static bool isHeld(const ModifierKeySet& keys, std::uint64_t flags);

  private:
    bool isGestureInProgress() const;
    void beginGesture(bool resize);
    void endGesture();
    void cancelGesture();
    void releaseGestureInput();
    void startHealthCheckTimer();
    void checkTapHealth();
    void startModifierWatchTimer();
    void checkModifiersStillHeld();

    Settings& settings_;
    Platform platform_;
    // Declared first so it outlives the stream and the timers that call into it.
    std::unique_ptr<DragSession> dragSession_;
    std::unique_ptr<EventTap> eventTap_;
    std::unique_ptr<Timer> healthCheckTimer_;
    std::unique_ptr<Timer> modifierWatchTimer_;
    // A cancelled gesture's keys are still held: they start nothing until let go.
    bool gestureCancelled_ = false;
    QMetaObject::Connection enabledChanged_;
};

}  // namespace gf
