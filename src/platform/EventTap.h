#pragma once

namespace gf {

// An installed, observe-only input stream. It never grabs, swallows or edits
// an event. Destroying the object removes the stream; no event is delivered
// after the destructor returns.
class EventTap {
public:
    virtual ~EventTap() = default;

    // Switches delivery on or off. Re-enabling after an interruption notice
    // re-establishes whatever the platform had dropped.
    virtual void setEnabled(bool enabled) = 0;
    virtual bool isEnabled() const = 0;

    // Pointer-motion events are delivered only while wanted, so that an idle
    // desktop costs no wake-ups. Modifier changes and interruption notices are
    // always delivered. Off when the tap is created.
    virtual void setPointerMotionWanted(bool wanted) = 0;
};

}  // namespace gf
