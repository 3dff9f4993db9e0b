#include "x11/WaitUntil.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <thread>

namespace gf::test {

namespace {

// Between polls the event loop runs for this long, so a poll that asks the X
// server does not hammer it while clients and the window manager catch up.
constexpr std::chrono::milliseconds kPollInterval(5);

void runEventLoop(std::chrono::milliseconds period) {
    if (QCoreApplication::instance() == nullptr) {
        std::this_thread::sleep_for(period);
        return;
    }
    QEventLoop loop;
    QTimer::singleShot(period, &loop, &QEventLoop::quit);
    loop.exec();
}

}  // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
        if (QCoreApplication::instance() != nullptr) {
            QCoreApplication::processEvents();
        }
        if (condition()) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        runEventLoop(kPollInterval);
    }
}

void processEventsFor(std::chrono::milliseconds period) {
    runEventLoop(period);
}

}  // namespace gf::test
