#include "fake/FakeDesktop.h"

#include <algorithm>

namespace gf::test {

void FakeDesktop::WindowTable::applyState(Entry& entry, WindowState wanted) {
    Rect& frame = entry.window.frame;
    Rect& restored = entry.window.restoredFrame;
    auto axis = [&](bool was, bool now, double Rect::*origin, double Rect::*length) {
        if (was == now) {
            return;
        }
        if (now) {
            restored.*origin = frame.*origin;
            restored.*length = frame.*length;
        }
        const Rect& to = now ? maximizedFrame : restored;
        frame.*origin = to.*origin;
        frame.*length = to.*length;
    };
    WindowState& state = entry.window.state;
    axis(state.maximizedHorizontally, wanted.maximizedHorizontally, &Rect::x, &Rect::width);
    axis(state.maximizedVertically, wanted.maximizedVertically, &Rect::y, &Rect::height);
    state.maximizedHorizontally = wanted.maximizedHorizontally;
    state.maximizedVertically = wanted.maximizedVertically;
}

namespace {

using Table = FakeDesktop::WindowTable;
using Kind = FakeDesktop::Write::Kind;

// Fails softly once its window is gone, like one to a vanished X window.
class FakeWindowHandle final : public WindowHandle {
  public:
    FakeWindowHandle(std::weak_ptr<Table> table, std::uint32_t number, bool numberKnown)
        : table_(std::move(table)), number_(number), numberKnown_(numberKnown) {}

    std::optional<std::uint32_t> windowNumber() const override {
        return numberKnown_ ? std::optional(number_) : std::nullopt;
    }
    std::optional<Point> position() override {
        return with<Point>([](Table&, Table::Entry& e) {
            return e.positionReadable ? std::optional(e.window.frame.origin()) : std::nullopt;
        });
    }
    std::optional<Size> size() override {
        return with<Size>([](Table&, Table::Entry& e) {
            return e.sizeReadable ? std::optional(e.window.frame.size()) : std::nullopt;
        });
    }
    std::optional<bool> isSizeSettable() override {
        return with<bool>([](Table&, Table::Entry& e) { return e.window.sizeSettable; });
    }
    WindowState state() override {
        return with<WindowState>([](Table&, Table::Entry& e) { return e.window.state; })
            .value_or(WindowState{});
    }
    // A window manager keeps a maximized window where it is.
    bool setPosition(Point topLeft) override {
        return change([&](Table& t, Table::Entry& e) {
            if (!e.window.state.isMaximized()) {
                e.window.frame = Rect::fromOriginAndSize(topLeft, e.window.frame.size());
            }
            t.record(number_, Kind::position, topLeft);
            return true;
        });
    }
    bool setSize(Size size) override {
        return change([&](Table& t, Table::Entry& e) {
            if (!e.window.sizeSettable) {
                return false;
            }
            if (!e.window.state.isMaximized()) {
                e.window.frame = Rect::fromOriginAndSize(e.window.frame.origin(), size);
            }
            t.record(number_, Kind::size, {}, size);
            return true;
        });
    }
    bool setMaximized(bool horizontally, bool vertically) override {
        return change([&](Table& t, Table::Entry& e) {
            WindowState wanted = e.window.state;
            wanted.maximizedHorizontally = horizontally;
            wanted.maximizedVertically = vertically;
            t.record(number_, Kind::maximized);
            if (t.defersStateChanges) {
                t.pendingStates.emplace_back(number_, wanted);
            } else {
                t.applyState(e, wanted);
            }
            return true;
        });
    }
    bool raise() override {
        return change([&](Table& t, Table::Entry&) {
            t.record(number_, Kind::raise);
            auto it = std::ranges::find(t.windows, number_, &Table::Entry::number);
            std::rotate(t.windows.begin(), it, it + 1);
            return true;
        });
    }
    bool makeMain() override {
        return change([&](Table& t, Table::Entry&) {
            t.record(number_, Kind::makeMain);
            return true;
        });
    }

  private:
    template <typename T, typename F>
    std::optional<T> with(F apply) {
        auto table = table_.lock();
        if (!table) {
            return std::nullopt;
        }
        std::lock_guard lock(table->mutex);
        Table::Entry* entry = table->find(number_);
        return entry ? std::optional<T>(apply(*table, *entry)) : std::nullopt;
    }
    template <typename F>
    bool change(F apply) {
        return with<bool>(apply).value_or(false);
    }

    std::weak_ptr<Table> table_;
    std::uint32_t number_;
    bool numberKnown_;
};

}  // namespace

std::optional<std::vector<std::shared_ptr<WindowHandle>>> FakeDesktop::windowsOfProcess(
    std::int32_t pid) {
    if (unlistablePids.contains(pid)) {
        return std::nullopt;
    }
    std::lock_guard lock(table_->mutex);
    std::vector<std::shared_ptr<WindowHandle>> handles;
    for (const auto& entry : table_->windows) {
        if (entry.window.pid == pid && entry.window.hasHandle) {
            handles.push_back(
                std::make_shared<FakeWindowHandle>(table_, entry.number, entry.window.numberKnown));
        }
    }
    return handles;
}

}  // namespace gf::test
