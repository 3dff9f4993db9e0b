#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/InputService.h"

namespace gf::test {

// The fake desktop's keyboard and pointer. Delivery happens synchronously on
// the test thread, as the real backend delivers on the main thread.
class FakeInput final : public InputService {
  public:
    FakeInput();
    ~FakeInput() override;

    std::unique_ptr<EventTap> createEventTap(EventCallback callback) override;
    std::optional<Point> currentPointerPosition() override;
    std::uint64_t currentModifierFlags() override;
    std::unique_ptr<MonitorToken> addPointerMovedMonitor(PointerMovedCallback callback) override;

    // Test controls
    void setEventTapCreationFails(bool fails);
    bool hasEventTap() const;
    bool isEventTapEnabled() const;
    bool isPointerMotionWanted() const;
    std::size_t eventTapCreationCount() const;
    void pressModifiers(std::uint64_t flags);
    void setHeldModifiersSilently(std::uint64_t flags);
    void movePointer(Point p, std::optional<std::uint64_t> flags = std::nullopt);
    void dragPointer(Point p, std::optional<std::uint64_t> flags = std::nullopt);
    void interruptEventTap(InputEventType notice = InputEventType::tapDisabledByTimeout);
    void disableEventTapSilently();
    Point pointerPosition() const { return pointer_; }
    std::size_t pointerMonitorCount() const;
    void setPointerPositionReadable(bool readable) { pointerReadable_ = readable; }

    struct TapState;
    struct MonitorState;

  private:
    std::shared_ptr<TapState> liveTap() const;
    void deliverToTaps(const InputEvent& event, bool isMotion);
    void deliverPointerMoved(Point p, std::optional<std::uint64_t> flags, InputEventType type);

    std::shared_ptr<std::vector<std::weak_ptr<TapState>>> taps_;
    std::shared_ptr<std::vector<std::weak_ptr<MonitorState>>> monitors_;
    Point pointer_;
    std::uint64_t flags_ = 0;
    bool pointerReadable_ = true;
    bool tapCreationFails_ = false;
    std::size_t tapCreations_ = 0;
};

}  // namespace gf::test
