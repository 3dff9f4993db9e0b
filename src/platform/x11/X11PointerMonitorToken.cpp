#include "platform/x11/X11PointerMonitorToken.h"

#include "platform/x11/X11InputService.h"

namespace gf {

X11PointerMonitorToken::~X11PointerMonitorToken() {
    service_.removeMonitor(id_);
}

}  // namespace gf
