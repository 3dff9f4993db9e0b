#include "platform/x11/X11RestackPolicy.h"

#include <QMetaObject>
#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>

namespace gf {

namespace {

// When to look again after the restack request, each from the one before: a window manager
// that honours it has done so well within the first look or two; a tenth of a second without
// a change means that it will not.
constexpr std::array<std::chrono::milliseconds, 4> kLooks{
    std::chrono::milliseconds(10), std::chrono::milliseconds(20), std::chrono::milliseconds(30),
    std::chrono::milliseconds(40)};

}  // namespace

X11RestackPolicy::X11RestackPolicy() : context_(std::make_unique<QObject>()) {}

X11RestackPolicy::~X11RestackPolicy() = default;

X11RestackPolicy::Verdict X11RestackPolicy::verdictFor(xcb_window_t windowManager) const {
    std::lock_guard lock(mutex_);
    return windowManager == windowManager_ ? verdict_ : Verdict::unknown;
}

void X11RestackPolicy::watch(xcb_window_t windowManager, std::function<bool()> isInFront,
                             std::function<void()> onIgnored) {
    {
        std::lock_guard lock(mutex_);
        if (watching_) {
            return;
        }
        if (windowManager != windowManager_) {
            windowManager_ = windowManager;  // another window manager: learn anew
            verdict_ = Verdict::unknown;
        }
        watching_ = true;
        isInFront_ = std::move(isInFront);
        onIgnored_ = std::move(onIgnored);
    }
    QObject* context = context_.get();
    QMetaObject::invokeMethod(
        context, [this, context] { QTimer::singleShot(kLooks[0], context, [this] { check(0); }); },
        Qt::QueuedConnection);
}

void X11RestackPolicy::check(int attempt) {
    if (isInFront_()) {
        conclude(Verdict::honoured);
        return;
    }
    const auto next = static_cast<std::size_t>(attempt) + 1;
    if (next < kLooks.size()) {
        QTimer::singleShot(kLooks[next], context_.get(),
                           [this, next] { check(static_cast<int>(next)); });
        return;
    }
    const std::function<void()> onIgnored = onIgnored_;
    conclude(Verdict::ignored);
    onIgnored();
}

void X11RestackPolicy::conclude(Verdict verdict) {
    std::lock_guard lock(mutex_);
    verdict_ = verdict;
    watching_ = false;
    isInFront_ = nullptr;
    onIgnored_ = nullptr;
}

}  // namespace gf
