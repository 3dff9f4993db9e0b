#include "fake/FakeInput.h"

#include <algorithm>

namespace gf::test {

struct FakeInput::TapState {
    EventCallback callback;
    bool enabled = true;
    bool motionWanted = false;
    bool alive = true;
};

struct FakeInput::MonitorState {
    PointerMovedCallback callback;
    bool alive = true;
};

namespace {

template <typename T>
void forget(std::vector<std::weak_ptr<T>>& list, const T* item) {
    std::erase_if(list, [item](const std::weak_ptr<T>& w) {
        auto locked = w.lock();
        return !locked || locked.get() == item;
    });
}

class FakeEventTap final : public EventTap {
  public:
    FakeEventTap(std::shared_ptr<FakeInput::TapState> state,
                 std::weak_ptr<std::vector<std::weak_ptr<FakeInput::TapState>>> registry)
        : state_(std::move(state)), registry_(std::move(registry)) {}
    ~FakeEventTap() override {
        state_->alive = false;
        if (auto registry = registry_.lock()) {
            forget(*registry, state_.get());
        }
    }
    void setEnabled(bool enabled) override { state_->enabled = enabled; }
    bool isEnabled() const override { return state_->enabled; }
    void setPointerMotionWanted(bool wanted) override { state_->motionWanted = wanted; }

  private:
    std::shared_ptr<FakeInput::TapState> state_;
    std::weak_ptr<std::vector<std::weak_ptr<FakeInput::TapState>>> registry_;
};

class FakeMonitorToken final : public MonitorToken {
  public:
    FakeMonitorToken(std::shared_ptr<FakeInput::MonitorState> state,
                     std::weak_ptr<std::vector<std::weak_ptr<FakeInput::MonitorState>>> registry)
        : state_(std::move(state)), registry_(std::move(registry)) {}
    ~FakeMonitorToken() override {
        state_->alive = false;
        if (auto registry = registry_.lock()) {
            forget(*registry, state_.get());
        }
    }

  private:
    std::shared_ptr<FakeInput::MonitorState> state_;
    std::weak_ptr<std::vector<std::weak_ptr<FakeInput::MonitorState>>> registry_;
};

// Snapshot of the live entries, so a callback may add or remove taps and
// monitors while events are being delivered.
template <typename T>
std::vector<std::shared_ptr<T>> liveEntries(const std::vector<std::weak_ptr<T>>& list) {
    std::vector<std::shared_ptr<T>> live;
    for (const auto& w : list) {
        if (auto s = w.lock(); s && s->alive) {
            live.push_back(std::move(s));
        }
    }
    return live;
}

}  // namespace

FakeInput::FakeInput()
    : taps_(std::make_shared<std::vector<std::weak_ptr<TapState>>>()),
      monitors_(std::make_shared<std::vector<std::weak_ptr<MonitorState>>>()) {}
FakeInput::~FakeInput() = default;

// A new tap is enabled, as one installed by the real backend starts delivering at once.
std::unique_ptr<EventTap> FakeInput::createEventTap(EventCallback callback) {
    if (tapCreationFails_) {
        return nullptr;
    }
    ++tapCreations_;
    auto state = std::make_shared<TapState>();
    state->callback = std::move(callback);
    taps_->push_back(state);
    return std::make_unique<FakeEventTap>(std::move(state), taps_);
}

std::optional<Point> FakeInput::currentPointerPosition() {
    return pointerReadable_ ? std::optional(pointer_) : std::nullopt;
}

std::uint64_t FakeInput::currentModifierFlags() {
    return flags_;
}

std::unique_ptr<MonitorToken> FakeInput::addPointerMovedMonitor(PointerMovedCallback callback) {
    auto state = std::make_shared<MonitorState>();
    state->callback = std::move(callback);
    monitors_->push_back(state);
    return std::make_unique<FakeMonitorToken>(std::move(state), monitors_);
}

void FakeInput::setEventTapCreationFails(bool fails) {
    tapCreationFails_ = fails;
}

std::shared_ptr<FakeInput::TapState> FakeInput::liveTap() const {
    auto live = liveEntries(*taps_);
    return live.empty() ? nullptr : live.back();
}

bool FakeInput::hasEventTap() const {
    return liveTap() != nullptr;
}

bool FakeInput::isEventTapEnabled() const {
    auto tap = liveTap();
    return tap && tap->enabled;
}

bool FakeInput::isPointerMotionWanted() const {
    auto tap = liveTap();
    return tap && tap->motionWanted;
}

std::size_t FakeInput::eventTapCreationCount() const {
    return tapCreations_;
}

void FakeInput::deliverToTaps(const InputEvent& event, bool isMotion) {
    for (const auto& tap : liveEntries(*taps_)) {
        if (tap->alive && tap->enabled && (!isMotion || tap->motionWanted)) {
            tap->callback(event);
        }
    }
}

void FakeInput::pressModifiers(std::uint64_t flags) {
    flags_ = flags;
    deliverToTaps({InputEventType::flagsChanged, flags, pointer_}, false);
}

void FakeInput::setHeldModifiersSilently(std::uint64_t flags) {
    flags_ = flags;
}

void FakeInput::deliverPointerMoved(Point p, std::optional<std::uint64_t> flags,
                                    InputEventType type) {
    pointer_ = p;
    const std::uint64_t eventFlags = flags.value_or(flags_);
    deliverToTaps({type, eventFlags, p}, true);
    for (const auto& monitor : liveEntries(*monitors_)) {
        if (monitor->alive) {
            monitor->callback(eventFlags);
        }
    }
}

void FakeInput::movePointer(Point p, std::optional<std::uint64_t> flags) {
    deliverPointerMoved(p, flags, InputEventType::mouseMoved);
}

void FakeInput::dragPointer(Point p, std::optional<std::uint64_t> flags) {
    deliverPointerMoved(p, flags, InputEventType::leftMouseDragged);
}

void FakeInput::interruptEventTap(InputEventType notice) {
    for (const auto& tap : liveEntries(*taps_)) {
        if (!tap->alive) {
            continue;
        }
        tap->enabled = false;
        // The notice arrives even though the tap is now disabled: it is what
        // tells the owner to switch the tap back on.
        tap->callback({notice, flags_, pointer_});
    }
}

void FakeInput::disableEventTapSilently() {
    for (const auto& tap : liveEntries(*taps_)) {
        tap->enabled = false;
    }
}

std::size_t FakeInput::pointerMonitorCount() const {
    return liveEntries(*monitors_).size();
}

}  // namespace gf::test
