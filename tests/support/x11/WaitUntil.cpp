#include "x11/WaitUntil.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <thread>

namespace gf::test {

void processEventsFor(std::chrono::microseconds period) {
    if (QCoreApplication::instance() == nullptr) {
        std::this_thread::sleep_for(period);
        return;
    }
    QEventLoop loop;
    QTimer::singleShot(std::chrono::ceil<std::chrono::milliseconds>(period), &loop,
                       &QEventLoop::quit);
    loop.exec();
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout,
               std::chrono::microseconds interval) {
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
        processEventsFor(interval);
    }
}

}  // namespace gf::test
