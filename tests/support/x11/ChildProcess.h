#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace gf::test {

// A program started by a test, stopped with the object or when the test process dies.
class ChildProcess {
  public:
    struct Options {
        std::vector<std::string> arguments;  // arguments[0]: the program, looked up in PATH
        std::vector<std::pair<std::string, std::string>> environment;  // overrides the test's
        std::string outputFile;  // receives stdout and stderr; /dev/null when empty
        int inheritedFd = -1;    // a descriptor the child keeps under the same number
    };

    // nullptr with a one-line reason when the program cannot be started.
    static std::unique_ptr<ChildProcess> start(const Options& options, std::string* error);

    explicit ChildProcess(pid_t pid) : pid_(pid) {}
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() { terminate(); }

    pid_t pid() const { return pid_; }
    bool isRunning() { return !reap(false); }

    // nullopt when still running at the timeout or killed by a signal.
    std::optional<int> waitForExit(std::chrono::milliseconds timeout);
    // SIGTERM, then SIGKILL after the grace period; returns once the child is reaped.
    void terminate(std::chrono::milliseconds grace = std::chrono::milliseconds(2000));

  private:
    bool reap(bool block);
    bool reapWithin(std::chrono::milliseconds timeout);

    pid_t pid_;
    bool reaped_ = false;
    int status_ = 0;
};

std::string fileText(const std::filesystem::path& path);  // empty when it cannot be read
std::vector<std::string> linesOf(const std::filesystem::path& file);
std::string lastLines(const std::filesystem::path& file, std::size_t lines);

}  // namespace gf::test
