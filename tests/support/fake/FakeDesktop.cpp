#include "fake/FakeDesktop.h"

namespace gf::test {

FakeDesktop::FakeDesktop() = default;
FakeDesktop::~FakeDesktop() = default;

Platform FakeDesktop::platform() {
    return platform(queues_);
}

Platform FakeDesktop::platform(SerialQueueFactory& queues) {
    return Platform{input_,  windows_,    windows_, displays_, windows_,
                    grants_, mainThread_, queues,   ownPid};
}

}  // namespace gf::test
