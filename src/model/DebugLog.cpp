#include "model/DebugLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <mutex>
#include <string>

namespace gf {

namespace {

std::mutex& logPathMutex() {
    static std::mutex mutex;
    return mutex;
}

std::filesystem::path& logPathStorage() {
    static std::filesystem::path path = "/tmp/glimmerfold.log";
    return path;
}

std::filesystem::path currentLogPath() {
    const std::lock_guard lock(logPathMutex());
    return logPathStorage();
}

// Closes the descriptor when the call that opened it returns, whatever path it takes.
class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return fd_; }
    bool isOpen() const { return fd_ >= 0; }

  private:
    int fd_;
};

std::string utcTimestamp() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    if (::gmtime_r(&now, &utc) == nullptr) {
        return {};
    }
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &utc);
    return std::string(text, length);
}

// Another user could have placed a file, a device or a pipe at the shared path; only a regular
// file of our own is ours to append to.
bool isOwnRegularFile(int fd) {
    struct stat status {};
    if (::fstat(fd, &status) != 0) {
        return false;
    }
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

void writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        bytes.remove_prefix(std::size_t(written));
    }
}

}  // namespace

void setDebugLogPath(std::filesystem::path path) {
    const std::lock_guard lock(logPathMutex());
    logPathStorage() = std::move(path);
}

void debugLog(std::string_view message) {
    const std::string timestamp = utcTimestamp();
    if (timestamp.empty()) {
        return;
    }
    // O_NONBLOCK keeps a pipe planted at the path from blocking the caller; it does not change how
    // a regular file is written.
    const FileDescriptor file(::open(
        currentLogPath().c_str(),
        O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, S_IRUSR | S_IWUSR));
    if (!file.isOpen() || !isOwnRegularFile(file.get())) {
        return;
    }
    std::string line;
    line.reserve(timestamp.size() + message.size() + 4);
    line.append("[").append(timestamp).append("] ").append(message).append("\n");
    writeAll(file.get(), line);
}

}  // namespace gf
