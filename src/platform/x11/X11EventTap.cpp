#include "platform/x11/X11EventTap.h"

#include "platform/x11/X11InputService.h"

namespace gf {

X11EventTap::~X11EventTap() {
    service_.removeTap(id_);
}

void X11EventTap::setEnabled(bool enabled) {
    service_.setTapEnabled(id_, enabled);
}

bool X11EventTap::isEnabled() const {
    return service_.isTapEnabled(id_);
}

void X11EventTap::setPointerMotionWanted(bool wanted) {
    service_.setTapMotionWanted(id_, wanted);
}

void X11EventTap::setCancelKeyCaptured(bool captured) {
    service_.setTapCancelKeyCaptured(id_, captured);
}

}  // namespace gf
