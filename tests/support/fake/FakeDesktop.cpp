#include "fake/FakeDesktop.h"

#include <algorithm>
#include <mutex>

namespace gf::test {

// The windows and what was asked of them, shared with the handles, which may outlive the desktop
// and be used from a background thread.
struct FakeDesktop::WindowTable {
    struct Entry {
        std::uint32_t number = 0;
        Window window;
        bool positionReadable = true;
        bool sizeReadable = true;
    };

    mutable std::mutex mutex;
    std::vector<Entry> windows;  // front to back
    std::uint32_t nextNumber = 100;
    std::map<std::int32_t, std::map<std::string, bool, std::less<>>> attributes;
    std::vector<Write> writes;
    std::vector<AttributeWrite> attributeWrites;
    std::uint64_t nextSequence = 1;
    Rect maximizedFrame;  // the primary display's usable area
    bool defersStateChanges = false;
    std::vector<std::pair<std::uint32_t, WindowState>> pendingStates;

    Entry* find(std::uint32_t number) {
        auto it = std::ranges::find(windows, number, &Entry::number);
        return it == windows.end() ? nullptr : &*it;
    }
    void raiseToFront(std::uint32_t number) {
        auto it = std::ranges::find(windows, number, &Entry::number);
        std::rotate(windows.begin(), it, it + 1);
    }
    void record(std::uint32_t number, Write::Kind kind, Point point = {}, Size size = {},
                WindowState state = {}) {
        writes.push_back({number, kind, point, size, state, nextSequence++});
    }
    // What a window manager does: each axis maximized keeps the frame it had along that axis to
    // come back to, each axis let go gets it back.
    void applyState(Entry& entry, WindowState wanted) {
        WindowState& state = entry.window.state;
        Rect& frame = entry.window.frame;
        Rect& restored = entry.window.restoredFrame;
        if (state.maximizedHorizontally != wanted.maximizedHorizontally) {
            const Rect& to = wanted.maximizedHorizontally ? maximizedFrame : restored;
            if (wanted.maximizedHorizontally) {
                restored.x = frame.x;
                restored.width = frame.width;
            }
            frame.x = to.x;
            frame.width = to.width;
        }
        if (state.maximizedVertically != wanted.maximizedVertically) {
            const Rect& to = wanted.maximizedVertically ? maximizedFrame : restored;
            if (wanted.maximizedVertically) {
                restored.y = frame.y;
                restored.height = frame.height;
            }
            frame.y = to.y;
            frame.height = to.height;
        }
        state.maximizedHorizontally = wanted.maximizedHorizontally;
        state.maximizedVertically = wanted.maximizedVertically;
    }
};

struct FakeDesktop::Tap {
    std::vector<Tap*>& registry;
    EventCallback callback;
    bool enabled = true;  // as a tap installed by the real backend, it delivers at once
    bool motionWanted = false;
    bool cancelKeyCaptured = false;
};

struct FakeDesktop::Monitor {
    std::vector<Monitor*>& registry;
    PointerMovedCallback callback;
};

namespace {

// Fails softly once its window is gone, like a handle to a vanished X window.
class FakeWindowHandle final : public WindowHandle {
  public:
    using Table = FakeDesktop::WindowTable;
    using Kind = FakeDesktop::Write::Kind;

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
    bool setPosition(Point topLeft) override {
        return with<bool>([&](Table& t, Table::Entry& e) {
                   if (!e.window.state.isMaximized()) {
                       e.window.frame.x = topLeft.x;
                       e.window.frame.y = topLeft.y;
                   }
                   t.record(number_, Kind::position, topLeft);
                   return true;
               })
            .value_or(false);
    }
    bool setSize(Size size) override {
        return with<bool>([&](Table& t, Table::Entry& e) {
                   if (!e.window.sizeSettable) {
                       return false;
                   }
                   if (!e.window.state.isMaximized()) {
                       e.window.frame.width = size.width;
                       e.window.frame.height = size.height;
                   }
                   t.record(number_, Kind::size, {}, size);
                   return true;
               })
            .value_or(false);
    }
    WindowState state() override {
        return with<WindowState>([](Table&, Table::Entry& e) { return e.window.state; })
            .value_or(WindowState{});
    }
    bool setMaximized(bool horizontally, bool vertically) override {
        return with<bool>([&](Table& t, Table::Entry& e) {
                   WindowState wanted = e.window.state;
                   wanted.maximizedHorizontally = horizontally;
                   wanted.maximizedVertically = vertically;
                   t.record(number_, Kind::maximized, {}, {}, wanted);
                   if (t.defersStateChanges) {
                       t.pendingStates.emplace_back(number_, wanted);
                   } else {
                       t.applyState(e, wanted);
                   }
                   return true;
               })
            .value_or(false);
    }
    bool raise() override {
        return with<bool>([&](Table& t, Table::Entry&) {
                   t.record(number_, Kind::raise);
                   t.raiseToFront(number_);
                   return true;
               })
            .value_or(false);
    }
    bool makeMain() override {
        return with<bool>([&](Table& t, Table::Entry&) {
                   t.record(number_, Kind::makeMain);
                   return true;
               })
            .value_or(false);
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

    std::weak_ptr<Table> table_;
    std::uint32_t number_;
    bool numberKnown_;
};

class FakeEventTap final : public EventTap {
  public:
    explicit FakeEventTap(std::unique_ptr<FakeDesktop::Tap> tap) : tap_(std::move(tap)) {}
    ~FakeEventTap() override { std::erase(tap_->registry, tap_.get()); }
    void setEnabled(bool enabled) override { tap_->enabled = enabled; }
    bool isEnabled() const override { return tap_->enabled; }
    void setPointerMotionWanted(bool wanted) override { tap_->motionWanted = wanted; }
    void setCancelKeyCaptured(bool captured) override { tap_->cancelKeyCaptured = captured; }

  private:
    std::unique_ptr<FakeDesktop::Tap> tap_;
};

class FakeMonitorToken final : public MonitorToken {
  public:
    explicit FakeMonitorToken(std::unique_ptr<FakeDesktop::Monitor> monitor)
        : monitor_(std::move(monitor)) {}
    ~FakeMonitorToken() override { std::erase(monitor_->registry, monitor_.get()); }

  private:
    std::unique_ptr<FakeDesktop::Monitor> monitor_;
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

}  // namespace

FakeDesktop::FakeDesktop() : table_(std::make_shared<WindowTable>()) {
    setDisplays(displays_);
}
FakeDesktop::~FakeDesktop() = default;

void FakeDesktop::setDisplays(std::vector<DisplayInfo> displays) {
    displays_ = std::move(displays);
    std::lock_guard lock(table_->mutex);
    table_->maximizedFrame = {};
    if (!displays_.empty()) {
        table_->maximizedFrame = displays_.front().visibleFrame;
    }
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

Rect FakeDesktop::frameOf(std::uint32_t number) const {
    std::lock_guard lock(table_->mutex);
    return table_->find(number)->window.frame;
}

WindowState FakeDesktop::stateOf(std::uint32_t number) const {
    std::lock_guard lock(table_->mutex);
    return table_->find(number)->window.state;
}

void FakeDesktop::removeWindow(std::uint32_t number) {
    std::lock_guard lock(table_->mutex);
    std::erase_if(table_->windows,
                  [number](const WindowTable::Entry& entry) { return entry.number == number; });
}

void FakeDesktop::setStateChangesDeferred(bool deferred) {
    std::lock_guard lock(table_->mutex);
    table_->defersStateChanges = deferred;
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

void FakeDesktop::placeWindow(std::uint32_t number, Rect frame) {
    std::lock_guard lock(table_->mutex);
    table_->find(number)->window.frame = frame;
}

void FakeDesktop::setGeometryReadable(std::uint32_t number, bool position, bool size) {
    std::lock_guard lock(table_->mutex);
    WindowTable::Entry* entry = table_->find(number);
    entry->positionReadable = position;
    entry->sizeReadable = size;
}

std::vector<std::uint32_t> FakeDesktop::stackingOrder() const {
    std::lock_guard lock(table_->mutex);
    std::vector<std::uint32_t> order;
    for (const auto& entry : table_->windows) {
        order.push_back(entry.number);
    }
    return order;
}

std::vector<FakeDesktop::Write> FakeDesktop::writes() const {
    std::lock_guard lock(table_->mutex);
    return table_->writes;
}

std::vector<FakeDesktop::AttributeWrite> FakeDesktop::attributeWrites() const {
    std::lock_guard lock(table_->mutex);
    return table_->attributeWrites;
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

void FakeDesktop::addApplication(const RunningApplication& application) {
    applications_[application.pid] = application;
}

FakeDesktop::Tap* FakeDesktop::liveTap() const {
    return taps_.empty() ? nullptr : taps_.back();
}

bool FakeDesktop::isEventTapEnabled() const {
    return liveTap() && liveTap()->enabled;
}

bool FakeDesktop::isPointerMotionWanted() const {
    return liveTap() && liveTap()->motionWanted;
}

// Delivers to a snapshot, so that a callback may add or remove taps; one removed meanwhile is
// skipped.
void FakeDesktop::deliverToTaps(const InputEvent& event, bool isMotion) {
    for (Tap* tap : std::vector(taps_)) {
        if (std::ranges::count(taps_, tap) && tap->enabled && (!isMotion || tap->motionWanted)) {
            tap->callback(event);
        }
    }
}

Point FakeDesktop::pointer() const {
    std::lock_guard lock(pointerMutex_);
    return pointer_;
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

void FakeDesktop::pressModifiers(std::uint64_t flags) {
    flags_ = flags;
    deliverToTaps({InputEventType::flagsChanged, flags, pointer()}, false);
}

void FakeDesktop::pressCancelKey() {
    Tap* tap = liveTap();
    if (tap && tap->enabled && tap->cancelKeyCaptured) {
        tap->callback({InputEventType::cancelKeyPressed, flags_, pointer()});
    } else {
        ++cancelKeysSeenByApplications;
    }
}

bool FakeDesktop::isCancelKeyCaptured() const {
    return liveTap() && liveTap()->enabled && liveTap()->cancelKeyCaptured;
}

void FakeDesktop::deliverPointer(Point p, std::optional<std::uint64_t> flags, InputEventType type) {
    {
        std::lock_guard lock(pointerMutex_);
        pointer_ = p;
    }
    const std::uint64_t eventFlags = flags.value_or(flags_);
    deliverToTaps({type, eventFlags, p}, true);
    for (Monitor* monitor : std::vector(monitors_)) {
        if (std::ranges::count(monitors_, monitor)) {
            monitor->callback(eventFlags);
        }
    }
    for (Monitor* follower : std::vector(motionFollowers_)) {
        if (std::ranges::count(motionFollowers_, follower)) {
            follower->callback(eventFlags);
        }
    }
}

void FakeDesktop::movePointer(Point p, std::optional<std::uint64_t> flags) {
    deliverPointer(p, flags, InputEventType::mouseMoved);
}

void FakeDesktop::dragPointer(Point p, std::optional<std::uint64_t> flags) {
    deliverPointer(p, flags, InputEventType::leftMouseDragged);
}

// The notice arrives even though the tap is now disabled: it is what tells the owner to switch
// the tap back on.
void FakeDesktop::interruptEventTap() {
    for (Tap* tap : std::vector(taps_)) {
        if (!std::ranges::count(taps_, tap)) {
            continue;
        }
        tap->enabled = false;
        tap->callback({InputEventType::tapDisabledByTimeout, flags_, pointer()});
    }
}

void FakeDesktop::disableEventTapSilently() {
    for (Tap* tap : taps_) {
        tap->enabled = false;
    }
}

std::unique_ptr<EventTap> FakeDesktop::createEventTap(EventCallback callback) {
    if (tapCreationFails) {
        return nullptr;
    }
    ++tapsCreated;
    auto tap = std::make_unique<Tap>(Tap{taps_, std::move(callback), true, false, false});
    taps_.push_back(tap.get());
    return std::make_unique<FakeEventTap>(std::move(tap));
}

std::unique_ptr<MonitorToken> FakeDesktop::addPointerMovedMonitor(PointerMovedCallback callback) {
    auto monitor = std::make_unique<Monitor>(Monitor{monitors_, std::move(callback)});
    monitors_.push_back(monitor.get());
    return std::make_unique<FakeMonitorToken>(std::move(monitor));
}

// Offered together with sampling, as a desktop that can read the pointer from any thread can
// also say when it moved.
std::unique_ptr<MonitorToken> FakeDesktop::followPointerMotion(std::function<void()> moved) {
    if (!pointerSamplingOffered) {
        return nullptr;
    }
    auto follower = std::make_unique<Monitor>(
        Monitor{motionFollowers_, [moved = std::move(moved)](std::uint64_t) { moved(); }});
    motionFollowers_.push_back(follower.get());
    return std::make_unique<FakeMonitorToken>(std::move(follower));
}

namespace {

WindowDescription describe(const FakeDesktop::WindowTable::Entry& entry) {
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

std::optional<bool> FakeDesktop::applicationAttribute(std::int32_t pid, std::string_view name) {
    std::lock_guard lock(table_->mutex);
    const auto& attributes = table_->attributes[pid];
    const auto found = attributes.find(name);
    return found == attributes.end() ? std::nullopt : std::optional(found->second);
}

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

std::vector<RunningApplication> FakeDesktop::runningApplications() {
    std::vector<RunningApplication> list;
    for (const auto& [pid, application] : applications_) {
        list.push_back(application);
    }
    return list;
}

std::optional<std::string> FakeDesktop::identifierOfProcess(std::int32_t pid) {
    const auto found = applications_.find(pid);
    return found == applications_.end() ? std::nullopt : found->second.identifier;
}

std::optional<ApplicationIcon> FakeDesktop::iconOfInstalledApplication(
    const std::string& identifier) {
    const auto found = installed_.find(identifier);
    return found == installed_.end() ? std::nullopt : std::optional(found->second);
}

bool FakeDesktop::activate(std::int32_t pid) {
    activatedPids.push_back(pid);
    return true;
}

std::unique_ptr<Timer> FakeDesktop::scheduleRepeating(std::chrono::milliseconds period,
                                                      std::function<void()> handler) {
    return timeline_.schedule(timeline_.now() + period, period, std::move(handler));
}

std::unique_ptr<Timer> FakeDesktop::scheduleOnce(std::chrono::milliseconds delay,
                                                 std::function<void()> handler) {
    return timeline_.schedule(timeline_.now() + delay, {}, std::move(handler));
}

std::unique_ptr<SerialQueue> FakeDesktop::createSerialQueue(const char* /*label*/) {
    return std::make_unique<FakeSerialQueue>(timeline_);
}

}  // namespace gf::test
