#include "fake/FakeWindowSystem.h"

#include <algorithm>
#include <stdexcept>

namespace gf::test {

namespace {

struct FakeWindow {
    std::uint32_t number = 0;
    FakeWindowSpec spec;
    bool positionReadable = true;
    bool sizeReadable = true;
};

}  // namespace

struct FakeWindowSystem::State {
    explicit State(VirtualTimeline& timeline) : timeline(timeline) {}

    VirtualTimeline& timeline;
    mutable std::mutex mutex;
    std::vector<FakeWindow> windows;  // front to back
    std::uint32_t nextNumber = 100;
    std::map<std::int32_t, RunningApplication> applications;
    std::map<std::string, ApplicationIcon> installed;
    std::map<std::int32_t, std::map<std::string, bool, std::less<>>> attributes;
    std::vector<std::int32_t> unlistablePids;
    std::vector<WindowWrite> writes;
    std::vector<AttributeWrite> attributeWrites;
    std::vector<std::int32_t> activated;
    std::uint64_t nextSequence = 1;
    bool windowServerAvailable = true;

    FakeWindow* find(std::uint32_t number) {
        auto it = std::find_if(windows.begin(), windows.end(),
                               [number](const FakeWindow& w) { return w.number == number; });
        return it == windows.end() ? nullptr : &*it;
    }

    void raiseToFront(std::uint32_t number) {
        auto it = std::find_if(windows.begin(), windows.end(),
                               [number](const FakeWindow& w) { return w.number == number; });
        if (it != windows.end()) {
            std::rotate(windows.begin(), it, it + 1);
        }
    }

    void record(std::uint32_t number, WindowWrite::Kind kind, Point point, Size size,
                bool accepted) {
        writes.push_back({number, kind, point, size, timeline.now(), nextSequence++, accepted});
    }

    WindowDescription describe(const FakeWindow& w) const {
        WindowDescription d;
        d.windowNumber = w.number;
        d.ownerPid = w.spec.pid;
        d.layer = w.spec.layer;
        if (w.spec.boundsKnown) {
            d.bounds = w.spec.frame;
        }
        return d;
    }
};

namespace {

// Fails softly once its window is gone, like a handle to a vanished X window.
class FakeWindowHandle final : public WindowHandle {
  public:
    FakeWindowHandle(std::weak_ptr<FakeWindowSystem::State> state, std::uint32_t number,
                     bool numberKnown)
        : state_(std::move(state)), number_(number), numberKnown_(numberKnown) {}

    std::optional<std::uint32_t> windowNumber() const override {
        return numberKnown_ ? std::optional(number_) : std::nullopt;
    }

    std::optional<Point> position() override {
        return withWindow<Point>([](FakeWindow& w) -> std::optional<Point> {
            return w.positionReadable ? std::optional(w.spec.frame.origin()) : std::nullopt;
        });
    }
    std::optional<Size> size() override {
        return withWindow<Size>([](FakeWindow& w) -> std::optional<Size> {
            return w.sizeReadable ? std::optional(w.spec.frame.size()) : std::nullopt;
        });
    }
    std::optional<bool> isSizeSettable() override {
        return withWindow<bool>([](FakeWindow& w) { return std::optional(w.spec.sizeSettable); });
    }

    bool setPosition(Point topLeft) override {
        return change([&](FakeWindowSystem::State& s, FakeWindow& w) {
            w.spec.frame.x = topLeft.x;
            w.spec.frame.y = topLeft.y;
            s.record(number_, WindowWrite::Kind::position, topLeft, {}, true);
            return true;
        });
    }
    bool setSize(Size size) override {
        return change([&](FakeWindowSystem::State& s, FakeWindow& w) {
            const bool accepted = w.spec.sizeSettable;
            if (accepted) {
                w.spec.frame.width = size.width;
                w.spec.frame.height = size.height;
            }
            s.record(number_, WindowWrite::Kind::size, {}, size, accepted);
            return accepted;
        });
    }
    bool raise() override {
        return change([&](FakeWindowSystem::State& s, FakeWindow&) {
            s.record(number_, WindowWrite::Kind::raise, {}, {}, true);
            s.raiseToFront(number_);
            return true;
        });
    }
    bool makeMain() override {
        return change([&](FakeWindowSystem::State& s, FakeWindow&) {
            s.record(number_, WindowWrite::Kind::makeMain, {}, {}, true);
            return true;
        });
    }

  private:
    template <typename T, typename F>
    std::optional<T> withWindow(F read) {
        auto state = state_.lock();
        if (!state) {
            return std::nullopt;
        }
        std::lock_guard lock(state->mutex);
        FakeWindow* w = state->find(number_);
        return w ? read(*w) : std::nullopt;
    }

    template <typename F>
    bool change(F apply) {
        auto state = state_.lock();
        if (!state) {
            return false;
        }
        std::lock_guard lock(state->mutex);
        FakeWindow* w = state->find(number_);
        return w && apply(*state, *w);
    }

    std::weak_ptr<FakeWindowSystem::State> state_;
    std::uint32_t number_;
    bool numberKnown_;
};

}  // namespace

FakeWindowSystem::FakeWindowSystem(VirtualTimeline& timeline)
    : timeline_(timeline), state_(std::make_shared<State>(timeline)) {}
FakeWindowSystem::~FakeWindowSystem() = default;

std::optional<WindowDescription> FakeWindowSystem::windowAt(Point point) {
    std::lock_guard lock(state_->mutex);
    if (!state_->windowServerAvailable) {
        return std::nullopt;
    }
    for (const auto& w : state_->windows) {
        if (w.spec.frame.contains(point)) {
            return state_->describe(w);
        }
    }
    return std::nullopt;
}

std::vector<WindowDescription> FakeWindowSystem::onScreenWindows() {
    std::lock_guard lock(state_->mutex);
    std::vector<WindowDescription> list;
    for (const auto& w : state_->windows) {
        if (w.spec.layer >= WindowLayer::normal) {
            list.push_back(state_->describe(w));
        }
    }
    return list;
}

std::optional<std::vector<std::shared_ptr<WindowHandle>>> FakeWindowSystem::windowsOfProcess(
    std::int32_t pid) {
    std::lock_guard lock(state_->mutex);
    if (std::ranges::find(state_->unlistablePids, pid) != state_->unlistablePids.end()) {
        return std::nullopt;
    }
    std::vector<std::shared_ptr<WindowHandle>> handles;
    for (const auto& w : state_->windows) {
        if (w.spec.pid == pid && w.spec.hasHandle) {
            handles.push_back(
                std::make_shared<FakeWindowHandle>(state_, w.number, w.spec.numberKnown));
        }
    }
    return handles;
}

std::optional<bool> FakeWindowSystem::applicationAttribute(std::int32_t pid,
                                                           std::string_view name) {
    std::lock_guard lock(state_->mutex);
    auto app = state_->attributes.find(pid);
    if (app == state_->attributes.end()) {
        return std::nullopt;
    }
    auto attribute = app->second.find(name);
    return attribute == app->second.end() ? std::nullopt : std::optional(attribute->second);
}

bool FakeWindowSystem::setApplicationAttribute(std::int32_t pid, std::string_view name,
                                               bool value) {
    std::lock_guard lock(state_->mutex);
    auto app = state_->attributes.find(pid);
    if (app == state_->attributes.end()) {
        return false;
    }
    auto attribute = app->second.find(name);
    if (attribute == app->second.end()) {
        return false;
    }
    attribute->second = value;
    state_->attributeWrites.push_back(
        {pid, std::string(name), value, timeline_.now(), state_->nextSequence++});
    return true;
}

std::vector<RunningApplication> FakeWindowSystem::runningApplications() {
    std::lock_guard lock(state_->mutex);
    std::vector<RunningApplication> list;
    for (const auto& [pid, app] : state_->applications) {
        list.push_back(app);
    }
    return list;
}

std::optional<std::string> FakeWindowSystem::identifierOfProcess(std::int32_t pid) {
    std::lock_guard lock(state_->mutex);
    auto app = state_->applications.find(pid);
    return app == state_->applications.end() ? std::nullopt : app->second.identifier;
}

std::optional<ApplicationIcon> FakeWindowSystem::iconOfInstalledApplication(
    const std::string& identifier) {
    std::lock_guard lock(state_->mutex);
    auto it = state_->installed.find(identifier);
    return it == state_->installed.end() ? std::nullopt : std::optional(it->second);
}

bool FakeWindowSystem::activate(std::int32_t pid) {
    std::lock_guard lock(state_->mutex);
    state_->activated.push_back(pid);
    std::vector<std::uint32_t> own;
    for (const auto& w : state_->windows) {
        if (w.spec.pid == pid) {
            own.push_back(w.number);
        }
    }
    // Raise back to front so the application's windows keep their own order.
    for (auto it = own.rbegin(); it != own.rend(); ++it) {
        state_->raiseToFront(*it);
    }
    return !own.empty();
}

std::uint32_t FakeWindowSystem::addWindow(const FakeWindowSpec& spec) {
    std::lock_guard lock(state_->mutex);
    const std::uint32_t number = state_->nextNumber++;
    state_->windows.insert(state_->windows.begin(), FakeWindow{number, spec});
    auto& app = state_->applications[spec.pid];
    app.pid = spec.pid;
    app.isRegular = true;
    if (spec.identifier && !app.identifier) {
        app.identifier = spec.identifier;
        app.displayName = spec.identifier;
    }
    return number;
}

void FakeWindowSystem::removeWindow(std::uint32_t number) {
    std::lock_guard lock(state_->mutex);
    std::erase_if(state_->windows, [number](const FakeWindow& w) { return w.number == number; });
}

void FakeWindowSystem::setFrame(std::uint32_t number, Rect frame) {
    std::lock_guard lock(state_->mutex);
    if (FakeWindow* w = state_->find(number)) {
        w->spec.frame = frame;
    }
}

Rect FakeWindowSystem::frameOf(std::uint32_t number) const {
    std::lock_guard lock(state_->mutex);
    if (FakeWindow* w = state_->find(number)) {
        return w->spec.frame;
    }
    throw std::out_of_range("no fake window " + std::to_string(number));
}

void FakeWindowSystem::setGeometryReadable(std::uint32_t number, bool position, bool size) {
    std::lock_guard lock(state_->mutex);
    if (FakeWindow* w = state_->find(number)) {
        w->positionReadable = position;
        w->sizeReadable = size;
    }
}

std::vector<std::uint32_t> FakeWindowSystem::stackingOrder() const {
    std::lock_guard lock(state_->mutex);
    std::vector<std::uint32_t> order;
    for (const auto& w : state_->windows) {
        order.push_back(w.number);
    }
    return order;
}

std::vector<WindowWrite> FakeWindowSystem::writes() const {
    std::lock_guard lock(state_->mutex);
    return state_->writes;
}

std::vector<AttributeWrite> FakeWindowSystem::attributeWrites() const {
    std::lock_guard lock(state_->mutex);
    return state_->attributeWrites;
}

void FakeWindowSystem::clearWrites() {
    std::lock_guard lock(state_->mutex);
    state_->writes.clear();
    state_->attributeWrites.clear();
}

void FakeWindowSystem::setWindowServerAvailable(bool available) {
    std::lock_guard lock(state_->mutex);
    state_->windowServerAvailable = available;
}

void FakeWindowSystem::setWindowListingFails(std::int32_t pid, bool fails) {
    std::lock_guard lock(state_->mutex);
    std::erase(state_->unlistablePids, pid);
    if (fails) {
        state_->unlistablePids.push_back(pid);
    }
}

void FakeWindowSystem::setApplicationAttributeValue(std::int32_t pid, const std::string& name,
                                                    std::optional<bool> value) {
    std::lock_guard lock(state_->mutex);
    if (value) {
        state_->attributes[pid][name] = *value;
    } else if (auto app = state_->attributes.find(pid); app != state_->attributes.end()) {
        app->second.erase(name);
    }
}

std::optional<bool> FakeWindowSystem::applicationAttributeValue(std::int32_t pid,
                                                                const std::string& name) const {
    std::lock_guard lock(state_->mutex);
    auto app = state_->attributes.find(pid);
    if (app == state_->attributes.end()) {
        return std::nullopt;
    }
    auto attribute = app->second.find(name);
    return attribute == app->second.end() ? std::nullopt : std::optional(attribute->second);
}

void FakeWindowSystem::addApplication(const RunningApplication& application) {
    std::lock_guard lock(state_->mutex);
    state_->applications[application.pid] = application;
}

void FakeWindowSystem::installApplication(const std::string& identifier,
                                          const ApplicationIcon& icon) {
    std::lock_guard lock(state_->mutex);
    state_->installed[identifier] = icon;
}

std::vector<std::int32_t> FakeWindowSystem::activatedPids() const {
    std::lock_guard lock(state_->mutex);
    return state_->activated;
}

}  // namespace gf::test
