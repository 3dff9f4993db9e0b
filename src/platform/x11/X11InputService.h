#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/InputService.h"
#include "platform/x11/X11CancelKeyGrab.h"
#include "platform/x11/X11CrossingWatch.h"
#include "platform/x11/X11EventListener.h"
#include "platform/x11/X11MotionFollower.h"

namespace gf {

class XcbConnection;

// Observes modifiers through XKB state notifications and pointer motion through
// XInput 2 raw motion on the root window. Both are plain selections, never
// grabs, so they keep arriving while another client grabs the keyboard or
// pointer, and no other client loses an event. Pointer-moved monitors hear of
// the pointer crossing from one top-level window to another, and of modifier
// changes, never while a button is held or another client grabs the pointer. The one grab is
// Escape's, on every modifier combination, held only while a tap asks to capture it. Main thread
// only, except samplePointer(), which uses a connection of its own.
class X11InputService final : public InputService, public X11EventListener {
  public:
    // The connection must be the one whose events are read by an X11EventPump
    // delivering to this service. The pointer is sampled on samplingConnection,
    // which other threads may use too; without one it cannot be sampled.
    // Pointer motion is followed from a background thread through motionFollower, when given.
    explicit X11InputService(const XcbConnection& connection,
                             const XcbConnection* samplingConnection = nullptr,
                             std::unique_ptr<X11MotionFollower> motionFollower = nullptr);
    X11InputService(const X11InputService&) = delete;
    X11InputService& operator=(const X11InputService&) = delete;
    ~X11InputService() override;

    // Whether both input extensions are present, so that taps can be created.
    bool canObserveInput() const { return hasKeyboardExtension_ && hasInputExtension_; }
    bool hasKeyboardExtension() const { return hasKeyboardExtension_; }
    bool hasInputExtension() const { return hasInputExtension_; }

    std::unique_ptr<EventTap> createEventTap(EventCallback callback) override;
    std::optional<Point> currentPointerPosition() override;
    bool canSamplePointer() const override { return samplingConnection_ != nullptr; }
    std::optional<PointerSample> samplePointer() override;
    std::uint64_t currentModifierFlags() override;
    std::unique_ptr<MonitorToken> addPointerMovedMonitor(PointerMovedCallback callback) override;
    std::unique_ptr<MonitorToken> followPointerMotion(std::function<void()> moved) override;

    void handleEvent(const xcb_generic_event_t& event) override;
    void handleBatchEnd() override;

    // Used by the taps and monitor tokens this service hands out.
    void setTapEnabled(int id, bool enabled);
    bool isTapEnabled(int id) const;
    void setTapMotionWanted(int id, bool wanted);
    void setTapCancelKeyCaptured(int id, bool captured);
    void removeTap(int id);
    void removeMonitor(int id);

  private:
    struct Tap {
        EventCallback callback;
        bool enabled = true;
        bool motionWanted = false;
        bool cancelKeyCaptured = false;
    };

    struct PointerState {
        Point location;
        std::uint16_t mask = 0;
    };

    // Marks the position read for the event being delivered, for as long as
    // the callbacks run (they may start or end a nested delivery).
    class DeliveringPointer {
      public:
        DeliveringPointer(X11InputService& service, std::optional<Point> location)
            : service_(service), previous_(service.pointerBeingDelivered_) {
            service_.pointerBeingDelivered_ = location;
        }
        ~DeliveringPointer() { service_.pointerBeingDelivered_ = previous_; }
        DeliveringPointer(const DeliveringPointer&) = delete;
        DeliveringPointer& operator=(const DeliveringPointer&) = delete;

      private:
        X11InputService& service_;
        std::optional<Point> previous_;
    };

    void initializeExtensions();
    void updateSelections(bool force);
    void selectKeyboardEvents(bool wanted);
    void selectInputEvents(bool motion, bool hierarchy);
    void deliverCancelKey(const xcb_key_press_event_t& press);
    static std::optional<PointerState> queryPointer(const XcbConnection& connection);
    std::optional<PointerState> queryPointer() const { return queryPointer(connection_); }
    void deliverPendingMotion();
    void deliverPendingCrossing();
    void deliverToMonitors(Point location, std::uint16_t state);
    void deliverFlagsChanged(std::uint8_t modifiers);
    void interruptTaps();
    void deliverToTaps(const InputEvent& event, bool motion, bool cancelKey = false);

    const XcbConnection& connection_;
    const XcbConnection* samplingConnection_;
    bool hasKeyboardExtension_ = false;
    bool hasInputExtension_ = false;
    std::uint8_t keyboardEventBase_ = 0;
    std::uint8_t inputOpcode_ = 0;

    // Shared so that a callback may remove its own tap while it runs.
    std::map<int, std::shared_ptr<Tap>> taps_;
    std::map<int, std::shared_ptr<PointerMovedCallback>> monitors_;
    int nextId_ = 1;

    bool keyboardSelected_ = false;
    bool motionSelected_ = false;
    bool hierarchySelected_ = false;
    bool motionPending_ = false;
    // The modifier flags of the last key change delivered, once there was one.
    std::optional<std::uint64_t> deliveredKeyFlags_;
    X11CancelKeyGrab cancelKey_;
    X11CrossingWatch crossings_;
    std::unique_ptr<X11MotionFollower> motionFollower_;
    std::optional<X11CrossingWatch::Crossing> pendingCrossing_;
    std::optional<Point> pointerBeingDelivered_;
};

}  // namespace gf
