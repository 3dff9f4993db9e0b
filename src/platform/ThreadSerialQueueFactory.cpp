#include "platform/ThreadSerialQueueFactory.h"

#include "platform/ThreadSerialQueue.h"

namespace gf {

std::unique_ptr<SerialQueue> ThreadSerialQueueFactory::createSerialQueue(const char* label) {
    return std::make_unique<ThreadSerialQueue>(label ? label : "");
}

}  // namespace gf
