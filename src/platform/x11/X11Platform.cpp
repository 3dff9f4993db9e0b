#include "platform/x11/X11Platform.h"

#include <QCoreApplication>

#include <unistd.h>

#include <iostream>

#include "platform/x11/DesktopEntryIndex.h"
#include "platform/x11/X11ApplicationRegistry.h"
#include "platform/x11/X11DisplayService.h"
#include "platform/x11/X11EventPump.h"
#include "platform/x11/X11GrantService.h"
#include "platform/x11/X11InputService.h"
#include "platform/x11/X11MotionFollower.h"
#include "platform/x11/X11TaskbarPresence.h"
#include "platform/x11/X11WindowControl.h"
#include "platform/x11/X11WindowReader.h"
#include "platform/x11/X11WindowServer.h"
#include "platform/x11/XcbConnection.h"

namespace gf {

struct X11Platform::Key {};

X11Platform::X11Platform(const Key&) {}

X11Platform::~X11Platform() {
    // The pump reads events into the input service, so it goes first.
    pump_.reset();
}

std::unique_ptr<X11Platform> X11Platform::connect(const char* displayName, std::string* error) {
    if (QCoreApplication::instance() == nullptr) {
        if (error != nullptr) {
            *error = "reading X events needs a QCoreApplication";
        }
        return nullptr;
    }
    auto events = XcbConnection::open(displayName, error);
    if (!events) {
        return nullptr;
    }
    auto requests = XcbConnection::open(displayName, error, &events->atoms());
    if (!requests) {
        return nullptr;
    }

    auto platform = std::make_unique<X11Platform>(Key{});
    X11Platform& p = *platform;
    p.events_ = std::move(events);
    p.requests_ = std::move(requests);
    p.eventsReader_ = std::make_unique<X11WindowReader>(*p.events_);
    p.requestsReader_ = std::make_unique<X11WindowReader>(*p.requests_);
    // A third connection waits for pointer motion during a gesture on a thread of its own.
    p.input_ = std::make_unique<X11InputService>(
        *p.events_, p.requests_.get(),
        X11MotionFollower::create(XcbConnection::open(displayName, nullptr, &p.events_->atoms())));
    p.windowServer_ = std::make_unique<X11WindowServer>(*p.eventsReader_);
    p.windowControl_ = std::make_unique<X11WindowControl>(*p.requests_, *p.requestsReader_);
    p.displays_ = std::make_unique<X11DisplayService>(*p.events_, *p.eventsReader_);
    p.applications_ = std::make_unique<X11ApplicationRegistry>(
        *p.events_, *p.eventsReader_, &DesktopEntryIndex::standardDirectories);
    p.grants_ = std::make_unique<X11GrantService>(
        X11GrantService::InputExtensions{p.input_->hasKeyboardExtension(),
                                         p.input_->hasInputExtension()},
        &X11GrantService::processEnvironment);
    p.pump_ = std::make_unique<X11EventPump>(*p.events_, *p.input_, [&p] { p.connectionLost(); });
    if (p.events_->hasError() || p.requests_->hasError()) {
        if (error != nullptr) {
            *error = "the X connection broke while starting";
        }
        return nullptr;
    }
    return platform;
}

bool X11Platform::canReach(const char* displayName, std::string* error) {
    return XcbConnection::open(displayName, error) != nullptr;
}

InputService& X11Platform::input() {
    return *input_;
}

WindowServer& X11Platform::windowServer() {
    return *windowServer_;
}

WindowControl& X11Platform::windowControl() {
    return *windowControl_;
}

DisplayService& X11Platform::displays() {
    return *displays_;
}

ApplicationRegistry& X11Platform::applications() {
    return *applications_;
}

GrantService& X11Platform::grants() {
    return *grants_;
}

Platform X11Platform::platform(MainThreadScheduler& mainThread, SerialQueueFactory& queues) {
    return Platform{*input_,    *windowServer_, *windowControl_,
                    *displays_, *applications_, *grants_,
                    mainThread, queues,         static_cast<std::int32_t>(getpid())};
}

std::unique_ptr<TaskbarPresence> X11Platform::taskbarPresence() {
    return X11TaskbarPresence::forApplication();
}

void X11Platform::setConnectionLostHandler(std::function<void()> handler) {
    connectionLostHandler_ = std::move(handler);
}

bool X11Platform::isConnectionLost() const {
    return connectionLostReported_;
}

void X11Platform::processPendingEvents() {
    pump_->processPendingEvents();
}

void X11Platform::connectionLost() {
    if (connectionLostReported_) {
        return;
    }
    connectionLostReported_ = true;
    std::cerr << connectionLostMessage << '\n';
    if (connectionLostHandler_) {
        connectionLostHandler_();
    }
}

}  // namespace gf
