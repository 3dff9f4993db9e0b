#include "fake/FakeDesktop.h"

#include <algorithm>
#include <mutex>
#include <ranges>

namespace gf::test {

namespace {

using Table = FakeDesktop::WindowTable;

// Calls `deliver` on a snapshot of the registry, skipping entries removed meanwhile, so that a
// callback may add or remove entries.
template <typename T, typename F>
void forEachRegistered(const std::vector<T*>& registry, F deliver) {
    for (T* entry : std::vector(registry)) {
        if (std::ranges::count(registry, entry)) {
            deliver(*entry);
        }
    }
}

// Listed in the desktop's registry for as long as the object the platform handed out lives.
template <typename Base, typename T>
class Registered : public Base {
  public:
    Registered(std::vector<T*>& registry, T item) : registry_(registry), item_(std::move(item)) {
        registry_.push_back(&item_);
    }
    ~Registered() override { std::erase(registry_, &item_); }

  protected:
    std::vector<T*>& registry_;
    T item_;
};

using FakeMonitorToken = Registered<MonitorToken, InputService::PointerMovedCallback>;

class FakeEventTap final : public Registered<EventTap, FakeDesktop::Tap> {
  public:
    using Registered::Registered;
    void setEnabled(bool enabled) override { item_.enabled = enabled; }
    bool isEnabled() const override { return item_.enabled; }
    void setPointerMotionWanted(bool wanted) override { item_.motionWanted = wanted; }
    void setCancelKeyCaptured(bool captured) override { item_.cancelKeyCaptured = captured; }
};

class FakeSerialQueue final : public SerialQueue {
  public:
    explicit FakeSerialQueue(VirtualTimeline& timeline)
        : timeline_(timeline), group_(timeline.newGroup()) {}
    ~FakeSerialQueue() override { timeline_.drainGroup(group_); }

    void async(std::function<void()> task) override { timeline_.post(group_, std::move(task)); }
    std::unique_ptr<Timer> scheduleRepeating(std::chrono::microseconds period,
                                             std::chrono::microseconds /*leeway*/,
                                             std::function<void()> handler) override {
        return timeline_.schedule(timeline_.now(), period, std::move(handler), group_);
    }

  private:
    VirtualTimeline& timeline_;
    VirtualTimeline::Group group_;
};

WindowDescription describe(const Table::Entry& entry) {
    WindowDescription d;
    d.windowNumber = entry.number;
    d.ownerPid = entry.window.pid;
    d.layer = entry.window.layer;
    d.applicationIdentifier = entry.window.identifier;
    if (entry.window.boundsKnown) {
        d.bounds = entry.window.frame;
    }
    return d;
}

}  // namespace

FakeDesktop::FakeDesktop() : table_(std::make_shared<WindowTable>()) {
    setDisplays(displays_);
}

void FakeDesktop::setDisplays(std::vector<DisplayInfo> displays) {
    displays_ = std::move(displays);
    std::lock_guard lock(table_->mutex);
    table_->maximizedFrame = displays_.empty() ? Rect{} : displays_.front().visibleFrame;
}

std::uint32_t FakeDesktop::addWindow(const Window& window) {
    auto& application = applications_[window.pid];
    application.pid = window.pid;
    application.isRegular = true;
    if (window.identifier && !application.identifier) {
        application.identifier = application.displayName = window.identifier;
    }
    std::lock_guard lock(table_->mutex);
    const std::uint32_t number = table_->nextNumber++;
    table_->windows.insert(table_->windows.begin(), {number, window, true, true});
    return number;
}

void FakeDesktop::carryOutStateChanges() {
    std::lock_guard lock(table_->mutex);
    for (const auto& [number, wanted] : table_->pendingStates) {
        if (WindowTable::Entry* entry = table_->find(number)) {
            table_->applyState(*entry, wanted);
        }
    }
    table_->pendingStates.clear();
}

void FakeDesktop::setGeometryReadable(std::uint32_t number, bool position, bool size) {
    std::lock_guard lock(table_->mutex);
    WindowTable::Entry* entry = table_->find(number);
    entry->positionReadable = position;
    entry->sizeReadable = size;
}

std::vector<std::uint32_t> FakeDesktop::stackingOrder() const {
    std::lock_guard lock(table_->mutex);
    const auto numbers = table_->windows | std::views::transform(&WindowTable::Entry::number);
    return {numbers.begin(), numbers.end()};
}

void FakeDesktop::clearWrites() {
    std::lock_guard lock(table_->mutex);
    table_->writes.clear();
    table_->attributeWrites.clear();
}

void FakeDesktop::setAttribute(std::int32_t pid, const std::string& name,
                               std::optional<bool> value) {
    std::lock_guard lock(table_->mutex);
    if (value) {
        table_->attributes[pid][name] = *value;
    } else {
        table_->attributes[pid].erase(name);
    }
}

void FakeDesktop::deliverToTaps(const InputEvent& event, bool isMotion) {
    forEachRegistered(taps_, [&](Tap& tap) {
        if (tap.enabled && (!isMotion || tap.motionWanted)) {
            tap.callback(event);
        }
    });
}

std::optional<PointerSample> FakeDesktop::samplePointer() {
    if (!pointerSamplingOffered || pointerSamplingFails.load()) {
        return std::nullopt;
    }
    ++pointerSamples_;
    const PointerSample sampled{pointer(), flags_.load()};
    if (whilePointerIsSampled) {
        whilePointerIsSampled();
    }
    return sampled;
}

void FakeDesktop::pressCancelKey() {
    if (isCancelKeyCaptured()) {
        liveTap()->callback({InputEventType::cancelKeyPressed, flags_, pointer()});
    } else {
        ++cancelKeysSeenByApplications;
    }
}

void FakeDesktop::deliverPointer(Point p, std::optional<std::uint64_t> flags, InputEventType type) {
    {
        std::lock_guard lock(pointerMutex_);
        pointer_ = p;
    }
    const std::uint64_t eventFlags = flags.value_or(flags_);
    deliverToTaps({type, eventFlags, p}, true);
    const auto report = [eventFlags](PointerMovedCallback& callback) { callback(eventFlags); };
    forEachRegistered(monitors_, report);
    forEachRegistered(motionFollowers_, report);
}

// The notice arrives even though the tap is now disabled: it is what tells the owner to switch
// the tap back on.
void FakeDesktop::interruptEventTap() {
    forEachRegistered(taps_, [this](Tap& tap) {
        tap.enabled = false;
        tap.callback({InputEventType::tapDisabledByTimeout, flags_, pointer()});
    });
}

std::unique_ptr<EventTap> FakeDesktop::createEventTap(EventCallback callback) {
    if (tapCreationFails) {
        return nullptr;
    }
    ++tapsCreated;
    return std::make_unique<FakeEventTap>(taps_, Tap{std::move(callback)});
}

std::unique_ptr<MonitorToken> FakeDesktop::addPointerMovedMonitor(PointerMovedCallback callback) {
    return std::make_unique<FakeMonitorToken>(monitors_, std::move(callback));
}

// Offered together with sampling, as a desktop that can read the pointer from any thread can
// also say when it moved.
std::unique_ptr<MonitorToken> FakeDesktop::followPointerMotion(std::function<void()> moved) {
    if (!pointerSamplingOffered) {
        return nullptr;
    }
    return std::make_unique<FakeMonitorToken>(
        motionFollowers_, [moved = std::move(moved)](std::uint64_t) { moved(); });
}

std::optional<WindowDescription> FakeDesktop::windowAt(Point point) {
    if (!windowServerAvailable) {
        return std::nullopt;
    }
    std::lock_guard lock(table_->mutex);
    for (const auto& entry : table_->windows) {
        if (entry.window.frame.contains(point)) {
            return describe(entry);
        }
    }
    return std::nullopt;
}

std::vector<WindowDescription> FakeDesktop::onScreenWindows() {
    std::lock_guard lock(table_->mutex);
    std::vector<WindowDescription> list;
    for (const auto& entry : table_->windows) {
        if (entry.window.layer >= WindowLayer::normal) {
            list.push_back(describe(entry));
        }
    }
    return list;
}

std::optional<bool> FakeDesktop::applicationAttribute(std::int32_t pid, std::string_view name) {
    std::lock_guard lock(table_->mutex);
    const auto& attributes = table_->attributes[pid];
    const auto found = attributes.find(name);
    return found == attributes.end() ? std::nullopt : std::optional(found->second);
}

// Only an attribute the application has can be set, as with a real one.
bool FakeDesktop::setApplicationAttribute(std::int32_t pid, std::string_view name, bool value) {
    std::lock_guard lock(table_->mutex);
    auto& attributes = table_->attributes[pid];
    const auto found = attributes.find(name);
    if (found == attributes.end()) {
        return false;
    }
    found->second = value;
    table_->attributeWrites.push_back({pid, value, table_->nextSequence++});
    return true;
}

std::unique_ptr<SerialQueue> FakeDesktop::createSerialQueue(const char* /*label*/) {
    return std::make_unique<FakeSerialQueue>(timeline_);
}

}  // namespace gf::test
