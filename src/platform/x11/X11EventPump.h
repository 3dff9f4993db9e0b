#pragma once

#include <QMetaObject>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace gf {

class X11EventListener;
class XcbConnection;

// Reads the events of one X connection on the main thread's Qt event loop and
// hands them to a listener. Needs a QCoreApplication.
class X11EventPump {
  public:
    X11EventPump(const XcbConnection& connection, X11EventListener& listener,
                 std::function<void()> onConnectionLost);
    X11EventPump(const X11EventPump&) = delete;
    X11EventPump& operator=(const X11EventPump&) = delete;
    ~X11EventPump();

    // Handles whatever arrived, from the socket and from XCB's queue.
    void processPendingEvents();
    bool isConnectionLost() const { return lost_; }

  private:
    void drain(bool readSocket);
    void reportConnectionLost();

    const XcbConnection& connection_;
    X11EventListener& listener_;
    std::function<void()> onConnectionLost_;
    std::unique_ptr<QSocketNotifier> notifier_;
    QMetaObject::Connection aboutToBlock_;
    bool draining_ = false;
    bool lost_ = false;
};

}  // namespace gf
