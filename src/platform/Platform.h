#pragma once

#include <cstdint>

#include "platform/ApplicationRegistry.h"
#include "platform/DisplayService.h"
#include "platform/GrantService.h"
#include "platform/InputService.h"
#include "platform/MainThreadScheduler.h"
#include "platform/SerialQueue.h"
#include "platform/WindowControl.h"
#include "platform/WindowServer.h"

namespace gf {

// Everything the engine and the application need from the desktop, as one
// bundle of references. The X11 backend provides the real services, the fake
// desktop of the tests provides simulated ones on virtual time.
struct Platform {
    InputService& input;
    WindowServer& windowServer;
    WindowControl& windowControl;
    DisplayService& displays;
    ApplicationRegistry& applications;
    GrantService& grants;
    MainThreadScheduler& mainThread;
    SerialQueueFactory& queues;
    std::int32_t ownPid = 0;
};

}  // namespace gf
