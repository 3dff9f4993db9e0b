#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <ranges>
#include <set>
#include <string>
#include <vector>

#include "fake/VirtualTimeline.h"
#include "platform/Platform.h"

namespace gf::test {

// Every platform service on virtual time: timers and queue work run only inside advance(), on the
// test's thread, so unit tests never sleep. Window handles may be used from any thread.
class FakeDesktop final : public InputService,
                          public WindowServer,
                          public WindowControl,
                          public ApplicationRegistry,
                          public DisplayService,
                          public GrantService,
                          public MainThreadScheduler,
                          public SerialQueueFactory {
  public:
    static constexpr std::int32_t ownPid = 4242;

    // Chainable, as gcc 12 warns about designated initializers that leave members out.
    struct Window {
        std::int32_t pid = 1000;
        Rect frame;  // outer frame, global top-left coordinates
        int layer = WindowLayer::normal;
        std::optional<std::string> identifier;  // the owning application's identifier
        bool sizeSettable = true;
        bool hasHandle = true;  // listed among its process's windows
        bool numberKnown = true;
        bool boundsKnown = true;
        WindowState state;
        Rect restoredFrame;  // before it was maximized, on the maximized axes

        static Window at(Rect frame, std::int32_t pid = 1000) {
            return Window{}.set(&Window::frame, frame).set(&Window::pid, pid);
        }
        Window& withLayer(int value) { return set(&Window::layer, value); }
        Window& withIdentifier(std::string value) { return set(&Window::identifier, value); }
        Window& withFixedSize() { return set(&Window::sizeSettable, false); }
        Window& withoutHandle() { return set(&Window::hasHandle, false); }
        Window& withUnknownNumber() { return set(&Window::numberKnown, false); }
        Window& withUnknownBounds() { return set(&Window::boundsKnown, false); }
        Window& withMaximized(Rect restored, bool horizontally = true, bool vertically = true) {
            state.maximizedHorizontally = horizontally;
            state.maximizedVertically = vertically;
            return set(&Window::restoredFrame, restored);
        }
        Window& withFullscreen() {
            state.fullscreen = true;
            return *this;
        }

      private:
        template <typename T, typename V>
        Window& set(T Window::*member, V value) {
            this->*member = std::move(value);
            return *this;
        }
    };

    // A request to a window or an application attribute; `sequence` orders both kinds.
    struct Write {
        enum class Kind { position, size, raise, makeMain, maximized };
        std::uint32_t window = 0;
        Kind kind = Kind::position;
        Point point;  // for position
        Size size;    // for size
        std::uint64_t sequence = 0;
    };
    struct AttributeWrite {
        std::int32_t pid = 0;
        bool value = false;
        std::uint64_t sequence = 0;
    };

    FakeDesktop();

    Platform platform() { return platform(*this); }
    // With serial queues from another factory, such as the real threaded one.
    Platform platform(SerialQueueFactory& queues) {
        return Platform{*this, *this, *this, *this, *this, *this, *this, queues, ownPid};
    }

    void advance(std::chrono::microseconds d) { timeline_.advance(d); }
    void runPendingQueueWork() { timeline_.advance({}); }
    std::size_t scheduledCount() { return timeline_.scheduledCount(); }

    // Primary first; by default one 1440 x 900 display with a 25-point panel at the top.
    void setDisplays(std::vector<DisplayInfo> displays);

    // Windows, front to back; a new one goes in front; numbers start at 100. The table is shared
    // with handles used on other threads.
    template <typename F>
    auto withTable(F f) const {
        std::lock_guard lock(table_->mutex);
        return f(*table_);
    }
    std::uint32_t addWindow(const Window& window);
    Rect frameOf(std::uint32_t number) const {
        return withTable([&](WindowTable& t) { return t.find(number)->window.frame; });
    }
    WindowState stateOf(std::uint32_t number) const {
        return withTable([&](WindowTable& t) { return t.find(number)->window.state; });
    }
    void removeWindow(std::uint32_t number) {
        withTable([&](WindowTable& t) {
            std::erase_if(t.windows, [&](auto& e) { return e.number == number; });
        });
    }
    // Maximizing goes to the primary's usable area; deferred, only when carried out.
    void setStateChangesDeferred(bool deferred) {
        withTable([&](WindowTable& t) { t.defersStateChanges = deferred; });
    }
    void carryOutStateChanges();
    void placeWindow(std::uint32_t number, Rect frame) {
        withTable([&](WindowTable& t) { t.find(number)->window.frame = frame; });
    }
    void setGeometryReadable(std::uint32_t number, bool position, bool size);
    std::vector<std::uint32_t> stackingOrder() const;
    std::vector<Write> writes() const {
        return withTable([](WindowTable& t) { return t.writes; });
    }
    std::vector<AttributeWrite> attributeWrites() const {
        return withTable([](WindowTable& t) { return t.attributeWrites; });
    }
    void clearWrites();
    bool windowServerAvailable = true;
    std::set<std::int32_t> unlistablePids;  // processes whose windows cannot be listed

    void setAttribute(std::int32_t pid, const std::string& name, std::optional<bool> value);
    void addApplication(const RunningApplication& application) {
        applications_[application.pid] = application;
    }
    void installApplication(const std::string& identifier, const ApplicationIcon& icon) {
        installed_[identifier] = icon;
    }
    std::vector<std::int32_t> activatedPids;

    bool tapCreationFails = false;
    std::size_t tapsCreated = 0;
    bool hasEventTap() const { return liveTap() != nullptr; }
    bool isEventTapEnabled() const { return liveTap() && liveTap()->enabled; }
    bool isPointerMotionWanted() const { return liveTap() && liveTap()->motionWanted; }
    void pressModifiers(std::uint64_t flags) {
        flags_ = flags;
        deliverToTaps({InputEventType::flagsChanged, flags, pointer()}, false);
    }
    void pressCancelKey();  // to the tap that captures it, else to the application
    bool isCancelKeyCaptured() const { return isEventTapEnabled() && liveTap()->cancelKeyCaptured; }
    int cancelKeysSeenByApplications = 0;
    void holdModifiersSilently(std::uint64_t flags) { flags_ = flags; }
    void movePointer(Point p, std::optional<std::uint64_t> flags = std::nullopt) {
        deliverPointer(p, flags, InputEventType::mouseMoved);
    }
    void dragPointer(Point p, std::optional<std::uint64_t> flags = std::nullopt) {
        deliverPointer(p, flags, InputEventType::leftMouseDragged);
    }
    void interruptEventTap();
    void disableEventTapSilently() {
        std::ranges::for_each(taps_, [](Tap* t) { t->enabled = false; });
    }
    std::size_t pointerMonitorCount() const { return monitors_.size(); }
    // Sampling the pointer from any thread, unless a test offers it, is unavailable.
    std::atomic<bool> pointerSamplingOffered{false};
    std::atomic<bool> pointerSamplingFails{false};
    // Runs inside each sample after the read: what the main thread does meanwhile.
    std::function<void()> whilePointerIsSampled;
    std::size_t pointerSamplesTaken() const { return pointerSamples_.load(); }

    // A request grants nothing by itself.
    bool accessibilityGranted = true;
    bool inputMonitoringGranted = true;
    int accessibilityRequests = 0;
    int inputMonitoringRequests = 0;
    int whereToGrantShown = 0;

    std::unique_ptr<EventTap> createEventTap(EventCallback callback) override;
    std::optional<Point> currentPointerPosition() override { return pointer(); }
    bool canSamplePointer() const override { return pointerSamplingOffered; }
    std::optional<PointerSample> samplePointer() override;
    std::uint64_t currentModifierFlags() override { return flags_; }
    std::unique_ptr<MonitorToken> addPointerMovedMonitor(PointerMovedCallback callback) override;
    std::unique_ptr<MonitorToken> followPointerMotion(std::function<void()> moved) override;
    std::optional<WindowDescription> windowAt(Point point) override;
    std::vector<WindowDescription> onScreenWindows() override;
    std::optional<std::vector<std::shared_ptr<WindowHandle>>> windowsOfProcess(
        std::int32_t pid) override;
    std::optional<bool> applicationAttribute(std::int32_t pid, std::string_view name) override;
    bool setApplicationAttribute(std::int32_t pid, std::string_view name, bool value) override;
    std::vector<RunningApplication> runningApplications() override {
        const auto running = std::views::values(applications_);
        return {running.begin(), running.end()};
    }
    std::optional<std::string> identifierOfProcess(std::int32_t pid) override {
        return applications_.contains(pid) ? applications_.at(pid).identifier : std::nullopt;
    }
    std::optional<ApplicationIcon> iconOfInstalledApplication(
        const std::string& identifier) override {
        return installed_.contains(identifier) ? std::optional(installed_.at(identifier))
                                               : std::nullopt;
    }
    bool activate(std::int32_t pid) override {
        activatedPids.push_back(pid);
        return true;
    }
    std::vector<DisplayInfo> displays() override { return displays_; }
    bool isAccessibilityGranted() override { return accessibilityGranted; }
    bool isInputMonitoringGranted() override { return inputMonitoringGranted; }
    bool requestAccessibility() override {
        ++accessibilityRequests;
        return accessibilityGranted;
    }
    bool requestInputMonitoring() override {
        ++inputMonitoringRequests;
        return inputMonitoringGranted;
    }
    void showWhereToGrant() override { ++whereToGrantShown; }
    std::unique_ptr<Timer> scheduleRepeating(std::chrono::milliseconds period,
                                             std::function<void()> handler) override {
        return timeline_.schedule(timeline_.now() + period, period, std::move(handler));
    }
    std::unique_ptr<Timer> scheduleOnce(std::chrono::milliseconds delay,
                                        std::function<void()> handler) override {
        return timeline_.schedule(timeline_.now() + delay, {}, std::move(handler));
    }
    std::unique_ptr<SerialQueue> createSerialQueue(const char* label) override;

    struct Tap {
        EventCallback callback;
        bool enabled = true;  // as the real backend's, delivering at once
        bool motionWanted = false;
        bool cancelKeyCaptured = false;
    };
    // Shared with the handles, which may outlive the desktop and run on a background thread.
    struct WindowTable {
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
        void record(std::uint32_t number, Write::Kind kind, Point point = {}, Size size = {}) {
            writes.push_back({number, kind, point, size, nextSequence++});
        }
        // Each axis maximized keeps its frame to come back to when let go.
        void applyState(Entry& entry, WindowState wanted);
    };

  private:
    Tap* liveTap() const { return taps_.empty() ? nullptr : taps_.back(); }
    Point pointer() const {
        std::lock_guard lock(pointerMutex_);
        return pointer_;
    }
    void deliverPointer(Point p, std::optional<std::uint64_t> flags, InputEventType type);
    void deliverToTaps(const InputEvent& event, bool isMotion);

    VirtualTimeline timeline_;
    std::shared_ptr<WindowTable> table_;
    std::vector<DisplayInfo> displays_{{{0, 0, 1440, 900}, {0, 25, 1440, 875}}};
    std::map<std::int32_t, RunningApplication> applications_;
    std::map<std::string, ApplicationIcon> installed_;
    std::vector<Tap*> taps_;
    std::vector<PointerMovedCallback*> monitors_;
    std::vector<PointerMovedCallback*> motionFollowers_;
    mutable std::mutex pointerMutex_;  // the pointer is also sampled from background threads
    Point pointer_;
    std::atomic<std::size_t> pointerSamples_{0};
    std::atomic<std::uint64_t> flags_{0};
};

}  // namespace gf::test
