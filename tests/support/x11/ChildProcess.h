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

// A program started by a test, stopped when the object goes. The child is
// also killed when the test process dies, so no server outlives a crash.
class ChildProcess {
  public:
    struct Options {
        std::vector<std::string> arguments;  // arguments[0]: the program, looked up in PATH
        // Added to the test's own environment, replacing variables of the same name.
        std::vector<std::pair<std::string, std::string>> environment;
        std::string outputFile;  // receives stdout and stderr; /dev/null when empty
        int inheritedFd = -1;    // a descriptor the child keeps under the same number
    };

    // nullptr with a one-line reason when the program cannot be started.
    static std::unique_ptr<ChildProcess> start(const Options& options, std::string* error);

    explicit ChildProcess(pid_t pid) : pid_(pid) {}
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    pid_t pid() const { return pid_; }
    bool isRunning();

    // The exit status once the child has ended by itself; nullopt when it is
    // still running at the timeout or was killed by a signal.
    std::optional<int> waitForExit(std::chrono::milliseconds timeout);

    // SIGTERM, then SIGKILL once the grace period is over; returns when the
    // child has been reaped.
    void terminate(std::chrono::milliseconds grace = std::chrono::milliseconds(2000));

  private:
    bool reap(bool block);

    pid_t pid_;
    bool reaped_ = false;
    int status_ = 0;
};

// The first line written to the descriptor (such as one a child inherited), without its end;
// nullopt when the writer closes it first or the time runs out.
std::optional<std::string> readLine(int fd, std::chrono::milliseconds timeout);

// The last lines of a file, such as a process's output, each indented for a failure message.
std::string lastLines(const std::filesystem::path& file, std::size_t lines);

}  // namespace gf::test
