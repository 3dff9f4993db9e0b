#pragma once

#include "platform/SerialQueue.h"

namespace gf {

// Serial queues that each run on a dedicated thread.
class ThreadSerialQueueFactory final : public SerialQueueFactory {
  public:
    std::unique_ptr<SerialQueue> createSerialQueue(const char* label) override;
};

}  // namespace gf
