#pragma once

#include "platform/EventTap.h"

namespace gf {

class X11InputService;

// A tap handed out by X11InputService; must not outlive it.
class X11EventTap final : public EventTap {
  public:
    X11EventTap(X11InputService& service, int id) : service_(service), id_(id) {}
    X11EventTap(const X11EventTap&) = delete;
    X11EventTap& operator=(const X11EventTap&) = delete;
    ~X11EventTap() override;

    void setEnabled(bool enabled) override;
    bool isEnabled() const override;
    void setPointerMotionWanted(bool wanted) override;
    void setCancelKeyCaptured(bool captured) override;

  private:
    X11InputService& service_;
    int id_;
};

}  // namespace gf
