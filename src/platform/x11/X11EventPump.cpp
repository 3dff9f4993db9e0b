#include "platform/x11/X11EventPump.h"

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>
#include <QThread>

#include <utility>

#include "platform/x11/X11EventListener.h"
#include "platform/x11/XcbConnection.h"
#include "platform/x11/XcbReply.h"

namespace gf {

namespace {

// Handling a run may itself read replies that pull further events off the
// socket; a few extra rounds catch those, and the rest wait for the next turn
// of the event loop so that a flood of events cannot starve it.
constexpr int kMaxRoundsPerTurn = 4;

}  // namespace

X11EventPump::X11EventPump(const XcbConnection& connection, X11EventListener& listener,
                           std::function<void()> onConnectionLost)
    : connection_(connection),
      listener_(listener),
      onConnectionLost_(std::move(onConnectionLost)),
      notifier_(std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection.get()),
                                                  QSocketNotifier::Read)) {
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { drain(true); });
    // A reply wait on this connection (any request made on the main thread)
    // can move events from the socket into XCB's queue without the socket
    // notifier ever firing for them; look into the queue before sleeping.
    if (QAbstractEventDispatcher* dispatcher =
            QAbstractEventDispatcher::instance(QThread::currentThread())) {
        aboutToBlock_ = QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock,
                                         notifier_.get(), [this] { drain(false); });
    }
}

X11EventPump::~X11EventPump() {
    QObject::disconnect(aboutToBlock_);
}

void X11EventPump::processPendingEvents() {
    drain(true);
}

void X11EventPump::drain(bool readSocket) {
    if (lost_ || draining_) {
        return;
    }
    draining_ = true;
    xcb_connection_t* c = connection_.get();
    for (int round = 0; round < kMaxRoundsPerTurn; ++round) {
        bool handledAny = false;
        while (true) {
            XcbPointer<xcb_generic_event_t> event(
                readSocket && round == 0 ? xcb_poll_for_event(c) : xcb_poll_for_queued_event(c));
            if (!event) {
                break;
            }
            handledAny = true;
            // Response type 0 is an error of an unchecked request; the code
            // that sent it has already treated the request as best effort.
            if (event->response_type != 0) {
                listener_.handleEvent(*event);
            }
        }
        if (!handledAny) {
            break;
        }
        listener_.handleBatchEnd();
    }
    draining_ = false;
    if (connection_.hasError()) {
        reportConnectionLost();
    }
}

void X11EventPump::reportConnectionLost() {
    lost_ = true;
    // A dead socket stays readable forever; leaving the notifier on would spin.
    notifier_->setEnabled(false);
    QObject::disconnect(aboutToBlock_);
    if (onConnectionLost_) {
        onConnectionLost_();
    }
}

}  // namespace gf
