#include "platform/QtMainThreadScheduler.h"

#include <QObject>
#include <QTimer>

namespace gf {

namespace {

class QtTimer final : public Timer {
  public:
    QtTimer(std::chrono::milliseconds interval, bool singleShot, std::function<void()> handler)
        : timer_(std::make_unique<QTimer>()),
          handler_(std::make_shared<const std::function<void()>>(std::move(handler))) {
        timer_->setTimerType(Qt::PreciseTimer);
        timer_->setSingleShot(singleShot);
        timer_->setInterval(interval);
        QObject::connect(timer_.get(), &QTimer::timeout, [this] { fire(); });
        timer_->start();
    }

    ~QtTimer() override {
        timer_->stop();
        if (destroyedWhileFiring_) {
            // The handler is destroying its own timer: Qt is still inside the
            // timer's signal, so the QTimer may only go once control returns.
            *destroyedWhileFiring_ = true;
            timer_->disconnect();
            timer_.release()->deleteLater();
        }
    }

    void cancel() override { timer_->stop(); }
    bool isActive() const override { return timer_->isActive(); }

  private:
    void fire() {
        bool destroyed = false;
        destroyedWhileFiring_ = &destroyed;
        // Kept alive by this copy even if the handler destroys the timer.
        const auto handler = handler_;
        (*handler)();
        if (!destroyed) {
            destroyedWhileFiring_ = nullptr;
        }
    }

    std::unique_ptr<QTimer> timer_;
    std::shared_ptr<const std::function<void()>> handler_;
    bool* destroyedWhileFiring_ = nullptr;
};

}  // namespace

std::unique_ptr<Timer> QtMainThreadScheduler::scheduleRepeating(std::chrono::milliseconds period,
                                                                std::function<void()> handler) {
    return std::make_unique<QtTimer>(period, false, std::move(handler));
}

std::unique_ptr<Timer> QtMainThreadScheduler::scheduleOnce(std::chrono::milliseconds delay,
                                                           std::function<void()> handler) {
    return std::make_unique<QtTimer>(delay, true, std::move(handler));
}

}  // namespace gf
