#pragma once

#include <mutex>

#include "platform/Point.h"

namespace gf {

// The latest pointer position, written by the input callback on the main
// thread or by the drag session's tick when it reads the pointer itself, and
// read by the tick. The lock is held only to copy two doubles, so neither
// side ever waits on the other's work.
class LatestMouse {
  public:
    void store(Point p) {
        std::lock_guard lock(mutex_);
        point_ = p;
    }
    Point load() const {
        std::lock_guard lock(mutex_);
        return point_;
    }

  private:
    mutable std::mutex mutex_;
    Point point_;
};

}  // namespace gf
