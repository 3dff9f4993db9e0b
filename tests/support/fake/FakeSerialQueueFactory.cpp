#include "fake/FakeSerialQueueFactory.h"

namespace gf::test {

namespace {

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

std::unique_ptr<SerialQueue> FakeSerialQueueFactory::createSerialQueue(const char* label) {
    labels_.emplace_back(label ? label : "");
    return std::make_unique<FakeSerialQueue>(timeline_);
}

}  // namespace gf::test
