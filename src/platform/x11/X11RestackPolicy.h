#pragma once

#include <xcb/xcb.h>

#include <functional>
#include <memory>
#include <mutex>

class QObject;

namespace gf {

// Whether the running window manager carries out a restack request for a window that does not
// have the focus. Some (xfwm4, fluxbox) ignore it, and only activation, which moves the focus,
// brings the window to the front there. Nobody can tell in advance, so the first such raise is
// watched on the main thread without blocking anyone, and the verdict is kept for as long as
// that window manager runs. Create and destroy it on the main thread of a running
// QCoreApplication; the other calls may come from any thread.
class X11RestackPolicy {
  public:
    enum class Verdict { unknown, honoured, ignored };

    X11RestackPolicy();
    ~X11RestackPolicy();
    X11RestackPolicy(const X11RestackPolicy&) = delete;
    X11RestackPolicy& operator=(const X11RestackPolicy&) = delete;

    // What is known of the window manager whose check window is given.
    Verdict verdictFor(xcb_window_t windowManager) const;
    // Watches a restack just requested: asks isInFront a few times over the next tenth of a
    // second, on the main thread. The first yes proves the window manager honours restacks; no
    // yes at all proves it ignores them, and onIgnored then brings the window forward some other
    // way. Only one restack is watched at a time; others requested meanwhile are not.
    void watch(xcb_window_t windowManager, std::function<bool()> isInFront,
               std::function<void()> onIgnored);

  private:
    void check(int attempt);
    void conclude(Verdict verdict);

    mutable std::mutex mutex_;
    xcb_window_t windowManager_ = XCB_WINDOW_NONE;
    Verdict verdict_ = Verdict::unknown;
    bool watching_ = false;
    std::function<bool()> isInFront_;
    std::function<void()> onIgnored_;
    // Timers and calls from other threads are bound to it, so none runs after the policy is gone.
    std::unique_ptr<QObject> context_;
};

}  // namespace gf
