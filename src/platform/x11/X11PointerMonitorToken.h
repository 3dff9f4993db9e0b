#pragma once

#include "platform/MonitorToken.h"

namespace gf {

class X11InputService;

// Keeps a pointer-moved monitor of X11InputService installed; must not
// outlive the service.
class X11PointerMonitorToken final : public MonitorToken {
  public:
    X11PointerMonitorToken(X11InputService& service, int id) : service_(service), id_(id) {}
    X11PointerMonitorToken(const X11PointerMonitorToken&) = delete;
    X11PointerMonitorToken& operator=(const X11PointerMonitorToken&) = delete;
    ~X11PointerMonitorToken() override;

  private:
    X11InputService& service_;
    int id_;
};

}  // namespace gf
