#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/PlatformBackend.h"

namespace gf {

class X11ApplicationRegistry;
class X11DisplayService;
class X11EventPump;
class X11GrantService;
class X11InputService;
class X11WindowControl;
class X11WindowReader;
class X11WindowServer;
class XcbConnection;

// The desktop services backed by an X server. Uses two connections: one read
// on the main thread for input events and main-thread questions, and one
// that never reads events, for window handles used from background threads.
// Create and use it on the main thread of a running QCoreApplication; event
// taps and monitor tokens it hands out must be destroyed before it.
class X11Platform final : public PlatformBackend {
    struct Key;  // only connect() constructs platforms

  public:
    // Connects to the named display ($DISPLAY when null or empty). Returns
    // nullptr with a one-line reason when that fails.
    static std::unique_ptr<X11Platform> connect(const char* displayName, std::string* error);
    // Whether an X server answers at displayName (nullptr: $DISPLAY); when it
    // does not, error says why. Asked before the toolkit starts, which would
    // otherwise abort with several lines of its own.
    static bool canReach(const char* displayName, std::string* error);

    explicit X11Platform(const Key&);
    X11Platform(const X11Platform&) = delete;
    X11Platform& operator=(const X11Platform&) = delete;
    ~X11Platform() override;

    InputService& input();
    WindowServer& windowServer();
    WindowControl& windowControl();
    DisplayService& displays();
    ApplicationRegistry& applications();
    GrantService& grants();

    Platform platform(MainThreadScheduler& mainThread, SerialQueueFactory& queues) override;
    // Sets the taskbar hint on the X display the toolkit uses.
    std::unique_ptr<TaskbarPresence> taskbarPresence() override;

    // Nothing is read from the connection after it was lost.
    void setConnectionLostHandler(std::function<void()> handler) override;
    bool isConnectionLost() const;

    // The one line that says the X server went away.
    static constexpr const char* connectionLostMessage =
        "Glimmerfold lost its connection to the X server.";

    // Handles the events already received; the Qt event loop does this by
    // itself, tests call it to avoid waiting for the loop.
    void processPendingEvents();

  private:
    void connectionLost();

    std::unique_ptr<XcbConnection> events_;
    std::unique_ptr<XcbConnection> requests_;
    std::unique_ptr<X11WindowReader> eventsReader_;
    std::unique_ptr<X11WindowReader> requestsReader_;
    std::unique_ptr<X11InputService> input_;
    std::unique_ptr<X11WindowServer> windowServer_;
    std::unique_ptr<X11WindowControl> windowControl_;
    std::unique_ptr<X11DisplayService> displays_;
    std::unique_ptr<X11ApplicationRegistry> applications_;
    std::unique_ptr<X11GrantService> grants_;
    std::unique_ptr<X11EventPump> pump_;
    std::function<void()> connectionLostHandler_;
    bool connectionLostReported_ = false;
};

}  // namespace gf
