#include "x11/GestureHands.h"

#include "x11/WaitUntil.h"

namespace gf::test {

namespace {

using namespace std::chrono_literals;

// Beyond the snapping distance per nudge: the window's own edges where the move began hold it.
constexpr int kNudgeStep = 12;
constexpr int kNudges = 4;
constexpr auto kFirstNudgeWait = 250ms;  // doubled per nudge, for sanitizers or a busy machine

std::uint32_t secondKey(GestureKind kind) {
    return kind == GestureKind::move ? Keysym::superL : Keysym::altL;
}

// How far the gesture took the frame: its position for a move, its size for a resize.
Point shift(GestureKind kind, const Rect& before, const Rect& now) {
    return kind == GestureKind::move ? Point{now.x - before.x, now.y - before.y}
                                     : Point{now.width - before.width, now.height - before.height};
}

}  // namespace

void PrintTo(GestureKind kind, std::ostream* out) {
    *out << (kind == GestureKind::move ? "move" : "resize");
}

Rect GestureHands::expectedFrame(GestureKind kind, const Rect& start, Point origin, int x, int y) {
    const double dx = x - origin.x;
    const double dy = y - origin.y;
    return kind == GestureKind::move ? Rect{start.x + dx, start.y + dy, start.width, start.height}
                                     : Rect{start.x, start.y, start.width + dx, start.height + dy};
}

std::optional<Point> GestureHands::nudgeUntilFollowed(GestureKind kind, WindowId window,
                                                      const Rect& before, int x, int y,
                                                      Point towards) {
    const DesktopProbe& probe = desktop_.probe();
    std::chrono::milliseconds wait = kFirstNudgeWait;
    for (int step = kNudgeStep; step <= kNudgeStep * kNudges; step += kNudgeStep, wait *= 2) {
        const int nudgedX = x + static_cast<int>(towards.x) * step;
        const int nudgedY = y + static_cast<int>(towards.y) * step;
        desktop_.input().movePointerTo(nudgedX, nudgedY);
        std::optional<Rect> now;
        if (waitUntil(
                [&] {
                    now = probe.frameGeometry(window);
                    return now && shift(kind, before, *now) != Point{0, 0};
                },
                wait)) {
            // The frame moved (or grew) by as much as the pointer has since the gesture's start.
            const Point moved = shift(kind, before, *now);
            return Point{nudgedX - moved.x, nudgedY - moved.y};
        }
    }
    return std::nullopt;
}

std::optional<Point> GestureHands::begin(GestureKind kind, WindowId window, int x, int y,
                                         std::chrono::milliseconds timeout, Point towards) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    do {
        const std::optional<Rect> before = desktop_.probe().frameGeometry(window);
        if (!before) {
            return std::nullopt;
        }
        desktop_.input().movePointerTo(x, y);
        hold(kind);
        if (const std::optional<Point> origin =
                nudgeUntilFollowed(kind, window, *before, x, y, towards)) {
            return origin;
        }
        release();
    } while (std::chrono::steady_clock::now() < deadline);
    return std::nullopt;
}

void GestureHands::hold(GestureKind kind) {
    desktop_.input().pressKey(Keysym::controlL);
    desktop_.input().pressKey(secondKey(kind));
    held_ = kind;
    holding_ = true;
}

void GestureHands::release(bool controlFirst) {
    if (!holding_) {
        return;
    }
    desktop_.input().releaseKey(controlFirst ? Keysym::controlL : secondKey(held_));
    desktop_.input().releaseKey(controlFirst ? secondKey(held_) : Keysym::controlL);
    holding_ = false;
}

GestureOutcome GestureHands::perform(GestureKind kind, WindowId window, int dx, int dy,
                                     const std::function<Rect(const Rect&)>& snap) {
    GestureOutcome outcome;
    const std::optional<Rect> start = desktop_.probe().frameGeometry(window);
    if (!start) {
        return outcome;
    }
    outcome.start = *start;
    const int x = static_cast<int>(kind == GestureKind::move ? start->midX() : start->maxX() - 16);
    const int y = static_cast<int>(kind == GestureKind::move ? start->midY() : start->maxY() - 16);
    const std::optional<Point> origin = begin(kind, window, x, y);
    if (!origin) {
        return outcome;
    }
    outcome.began = true;
    outcome.origin = *origin;
    constexpr int kSteps = 4;
    for (int step = 1; step <= kSteps; ++step) {
        desktop_.input().movePointerTo(x + dx * step / kSteps, y + dy * step / kSteps);
    }
    outcome.expected = expectedFrame(kind, *start, *origin, x + dx, y + dy);
    if (snap) {
        outcome.expected = snap(outcome.expected);
    }
    waitUntil([&] {
        outcome.landed = desktop_.probe().frameGeometry(window).value_or(Rect{});
        return outcome.landed == outcome.expected;
    });
    release();
    return outcome;
}

std::ostream& operator<<(std::ostream& out, const GestureOutcome& outcome) {
    auto rect = [&out](const Rect& r) -> std::ostream& {
        return out << r.x << "," << r.y << " " << r.width << "x" << r.height;
    };
    if (!outcome.began) {
        return out << "the frame never followed the pointer";
    }
    out << "from ";
    rect(outcome.start) << " the frame landed at ";
    rect(outcome.landed) << " instead of ";
    return rect(outcome.expected) << " (pointer origin " << outcome.origin.x << ","
                                  << outcome.origin.y << ")";
}

}  // namespace gf::test
