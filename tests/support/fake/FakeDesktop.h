#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fake/FakeDisplays.h"
#include "fake/FakeGrants.h"
#include "fake/FakeInput.h"
#include "fake/FakeMainThreadScheduler.h"
#include "fake/FakeSerialQueueFactory.h"
#include "fake/FakeWindowSpec.h"
#include "fake/FakeWindowSystem.h"
#include "fake/VirtualTimeline.h"
#include "fake/WindowWrite.h"
#include "platform/Platform.h"

namespace gf::test {

// A whole simulated desktop on virtual time: every platform service, with
// controls for the tests. Timers and serial-queue work run only inside
// advance() / runPendingQueueWork(), on the calling thread, so unit tests never
// sleep. Create it before, and destroy it after, whatever uses its platform().
class FakeDesktop {
  public:
    static constexpr std::int32_t ownPid = 4242;

    FakeDesktop();
    ~FakeDesktop();
    FakeDesktop(const FakeDesktop&) = delete;
    FakeDesktop& operator=(const FakeDesktop&) = delete;

    Platform platform();
    // The same services, with serial queues from another factory (such as the
    // real threaded one, for concurrency tests).
    Platform platform(SerialQueueFactory& queues);

    // Virtual time
    void advance(std::chrono::microseconds d) { timeline_.advance(d); }
    std::chrono::microseconds now() const { return timeline_.now(); }
    void runPendingQueueWork() { timeline_.runDue(); }

    // Displays: bottom-left coordinates, primary first
    void setDisplays(std::vector<DisplayInfo> displays) {
        displays_.setDisplays(std::move(displays));
    }

    // Windows, front to back; a new window goes in front; numbers start at 100
    std::uint32_t addWindow(const FakeWindowSpec& spec) { return windows_.addWindow(spec); }
    void removeWindow(std::uint32_t number) { windows_.removeWindow(number); }
    void setFrame(std::uint32_t number, Rect frame) { windows_.setFrame(number, frame); }
    Rect frameOf(std::uint32_t number) const { return windows_.frameOf(number); }
    void setGeometryReadable(std::uint32_t number, bool position, bool size) {
        windows_.setGeometryReadable(number, position, size);
    }
    std::vector<std::uint32_t> stackingOrder() const { return windows_.stackingOrder(); }
    std::vector<WindowWrite> writes() const { return windows_.writes(); }
    std::vector<AttributeWrite> attributeWrites() const { return windows_.attributeWrites(); }
    void clearWrites() { windows_.clearWrites(); }
    void setWindowServerAvailable(bool available) { windows_.setWindowServerAvailable(available); }
    void setWindowListingFails(std::int32_t pid, bool fails) {
        windows_.setWindowListingFails(pid, fails);
    }

    // Applications and their attribute (the "enhanced user interface" switch)
    void setApplicationAttribute(std::int32_t pid, const std::string& name,
                                 std::optional<bool> value) {
        windows_.setApplicationAttributeValue(pid, name, value);
    }
    std::optional<bool> applicationAttributeValue(std::int32_t pid, const std::string& name) const {
        return windows_.applicationAttributeValue(pid, name);
    }
    void addApplication(const RunningApplication& application) {
        windows_.addApplication(application);
    }
    std::vector<std::int32_t> activatedPids() const { return windows_.activatedPids(); }

    // Input
    void setEventTapCreationFails(bool fails) { input_.setEventTapCreationFails(fails); }
    bool hasEventTap() const { return input_.hasEventTap(); }
    bool isEventTapEnabled() const { return input_.isEventTapEnabled(); }
    bool isPointerMotionWanted() const { return input_.isPointerMotionWanted(); }
    void pressModifiers(std::uint64_t flags) { input_.pressModifiers(flags); }
    void setHeldModifiersSilently(std::uint64_t flags) { input_.setHeldModifiersSilently(flags); }
    void movePointer(Point p, std::optional<std::uint64_t> flags = std::nullopt) {
        input_.movePointer(p, flags);
    }
    void dragPointer(Point p, std::optional<std::uint64_t> flags = std::nullopt) {
        input_.dragPointer(p, flags);
    }
    void interruptEventTap() { input_.interruptEventTap(); }
    void disableEventTapSilently() { input_.disableEventTapSilently(); }
    Point pointerPosition() const { return input_.pointerPosition(); }
    std::size_t pointerMonitorCount() const { return input_.pointerMonitorCount(); }
    void setPointerPositionReadable(bool readable) { input_.setPointerPositionReadable(readable); }

    // The services themselves, for controls not forwarded above
    FakeWindowSystem& windows() { return windows_; }
    FakeInput& input() { return input_; }
    FakeGrants& grants() { return grants_; }
    FakeSerialQueueFactory& queues() { return queues_; }
    VirtualTimeline& timeline() { return timeline_; }

  private:
    VirtualTimeline timeline_;
    FakeMainThreadScheduler mainThread_{timeline_};
    FakeSerialQueueFactory queues_{timeline_};
    FakeWindowSystem windows_{timeline_};
    FakeDisplays displays_;
    FakeGrants grants_;
    FakeInput input_;
};

}  // namespace gf::test
