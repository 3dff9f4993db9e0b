#pragma once

#include <QString>

namespace gf {

// An exclusive advisory lock (flock) on a file, tried once when made and held
// until the object goes. The kernel lets go of it when the process ends,
// however it ends, so a crash never leaves it behind.
class FileLock {
  public:
    enum class State {
        held,           // this object holds the lock
        heldElsewhere,  // another open of the file holds it
        failed,         // the file could not be opened or locked
    };

    explicit FileLock(const QString& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    State state() const { return state_; }

  private:
    int fd_ = -1;
    State state_ = State::failed;
};

}  // namespace gf
