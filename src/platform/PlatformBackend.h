#pragma once

#include <functional>
#include <memory>

#include "platform/Platform.h"

namespace gf {

class TaskbarPresence;

// A desktop as the application starts it: the services the engine works with, the taskbar
// policy for the program's own windows, and word when the desktop goes away. The program's
// entry point picks the backend; everything after it sees only this.
class PlatformBackend {
  public:
    virtual ~PlatformBackend() = default;

    // The bundle the engine works with, completed by the timer services.
    virtual Platform platform(MainThreadScheduler& mainThread, SerialQueueFactory& queues) = 0;
    // Lists the program's windows in the taskbar or keeps them out of it; nullptr (with a line on
    // standard error) when the toolkit does not run on this desktop.
    virtual std::unique_ptr<TaskbarPresence> taskbarPresence() = 0;
    // Called once when the connection to the desktop is lost, after a line on stderr says so.
    virtual void setConnectionLostHandler(std::function<void()> handler) = 0;
};

}  // namespace gf
