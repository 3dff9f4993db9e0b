#pragma once

namespace gf {

// An installed, observe-only input stream. It never grabs, swallows or edits
// an event, except the cancel key while asked to capture it. Destroying the
// object removes the stream, and any capture with it; no event is delivered
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

    // While captured, each press of the cancel key (Escape), whatever modifiers are held with
    // it, reaches this stream as a cancelKeyPressed event and no application sees it. Held only
    // while enabled; off when the tap is created.
    virtual void setCancelKeyCaptured(bool captured) = 0;
};

}  // namespace gf
