#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "platform/EventTap.h"
#include "platform/InputEvent.h"
#include "platform/MonitorToken.h"
#include "platform/Point.h"
#include "platform/PointerSample.h"

namespace gf {

// Observes the user's keyboard modifiers and pointer for the whole desktop.
// Every callback runs on the main thread, and every call is made from it
// except samplePointer().
class InputService {
  public:
    using EventCallback = std::function<void(const InputEvent&)>;
    using PointerMovedCallback = std::function<void(std::uint64_t modifierFlags)>;

    virtual ~InputService() = default;

    // Installs the observe-only stream of pointer-moved, left-drag and
    // modifier-change events, plus interruption notices (the two tapDisabled
    // types). Returns nullptr when input cannot be observed at all (no display,
    // or a required input extension is missing).
    virtual std::unique_ptr<EventTap> createEventTap(EventCallback callback) = 0;

    // The pointer's position now; nullopt when it cannot be read.
    virtual std::optional<Point> currentPointerPosition() = 0;

    // Whether samplePointer() can read the pointer. Without it the
    // pointer's position during a gesture is known only from pointer-moved events.
    virtual bool canSamplePointer() const { return false; }

    // The pointer's position and the modifiers held now, read together. Unlike
    // every other call here it may be made from any thread, concurrently with
    // the main thread's calls, so that a background tick can read the pointer
    // without waking the main thread. nullopt when it cannot be read.
    virtual std::optional<PointerSample> samplePointer() { return std::nullopt; }

    // Calls back soon after the pointer moves, from a thread of the platform's own, once per run
    // of motion; the call only says that it moved, samplePointer() tells where. No call runs once
    // the token is destroyed. nullptr where motion cannot be followed this way; only one
    // follower at a time.
    virtual std::unique_ptr<MonitorToken> followPointerMotion(std::function<void()> moved) {
        (void)moved;
        return nullptr;
    }
    // The modifier bits held now (ModifierFlag); 0 when they cannot be read.
    virtual std::uint64_t currentModifierFlags() = 0;

    // Calls back once per pointer movement anywhere on the desktop, with the
    // modifier bits held at that moment. Returns nullptr when no monitor can
    // be installed.
    virtual std::unique_ptr<MonitorToken> addPointerMovedMonitor(PointerMovedCallback callback) = 0;
};

}  // namespace gf
