#include "app/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace gf {

FileLock::FileLock(const QString& path) {
    fd_ = ::open(path.toLocal8Bit().constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ < 0) {
        return;
    }
    if (::flock(fd_, LOCK_EX | LOCK_NB) == 0) {
        state_ = State::held;
        return;
    }
    state_ = errno == EWOULDBLOCK ? State::heldElsewhere : State::failed;
    ::close(fd_);
    fd_ = -1;
}

FileLock::~FileLock() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

}  // namespace gf
