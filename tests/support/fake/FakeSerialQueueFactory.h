#pragma once

#include <string>
#include <vector>

#include "fake/VirtualTimeline.h"
#include "platform/SerialQueue.h"

namespace gf::test {

// Serial queues on virtual time: their work runs on the test thread when the
// timeline advances, which keeps it serial by construction.
class FakeSerialQueueFactory final : public SerialQueueFactory {
  public:
    explicit FakeSerialQueueFactory(VirtualTimeline& timeline) : timeline_(timeline) {}

    std::unique_ptr<SerialQueue> createSerialQueue(const char* label) override;

    // The labels of every queue created, in order.
    const std::vector<std::string>& createdLabels() const { return labels_; }

  private:
    VirtualTimeline& timeline_;
    std::vector<std::string> labels_;
};

}  // namespace gf::test
