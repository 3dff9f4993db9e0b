#pragma once

#include <mutex>
#include <vector>

#include "platform/DisplayService.h"

namespace gf::test {

// Displays of the fake desktop; by default one 1440 x 900 display whose top
// 25 points are taken by a panel.
class FakeDisplays final : public DisplayService {
  public:
    std::vector<DisplayInfo> displays() override {
        std::lock_guard lock(mutex_);
        return displays_;
    }
    void setDisplays(std::vector<DisplayInfo> displays) {
        std::lock_guard lock(mutex_);
        displays_ = std::move(displays);
    }

  private:
    std::mutex mutex_;
    std::vector<DisplayInfo> displays_{{{0, 0, 1440, 900}, {0, 0, 1440, 875}}};
};

}  // namespace gf::test
