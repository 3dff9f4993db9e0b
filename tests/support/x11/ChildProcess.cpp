#include "x11/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

extern char** environ;

namespace gf::test {

namespace {

std::string findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return name;
    }
    const char* path = std::getenv("PATH");
    std::stringstream directories(path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin");
    std::string directory;
    while (std::getline(directories, directory, ':')) {
        const std::filesystem::path candidate = std::filesystem::path(directory) / name;
        if (access(candidate.c_str(), X_OK) == 0) {
            return candidate.string();
        }
    }
    return {};
}

std::vector<std::string> mergedEnvironment(
    const std::vector<std::pair<std::string, std::string>>& overrides) {
    std::vector<std::string> merged;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable(*entry);
        const std::string_view name = variable.substr(0, variable.find('='));
        if (std::ranges::none_of(overrides, [&](const auto& o) { return o.first == name; })) {
            merged.emplace_back(variable);
        }
    }
    for (const auto& [name, value] : overrides) {
        merged.push_back(name + "=" + value);
    }
    return merged;
}

std::vector<char*> pointersTo(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    for (std::string& string : strings) {
        pointers.push_back(string.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

std::unique_ptr<ChildProcess> ChildProcess::start(const Options& options, std::string* error) {
    auto fail = [error](const std::string& message) -> std::unique_ptr<ChildProcess> {
        *error = message;
        return nullptr;
    };
    if (options.arguments.empty()) {
        return fail("no program given");
    }
    const std::string program = findProgram(options.arguments.front());
    if (program.empty()) {
        return fail(options.arguments.front() + " is not installed");
    }
    // Prepared before fork: the test has threads, so the child makes only async-signal-safe calls.
    std::vector<std::string> arguments = options.arguments;
    std::vector<std::string> environment = mergedEnvironment(options.environment);
    std::vector<char*> argv = pointersTo(arguments);
    std::vector<char*> envp = pointersTo(environment);
    const std::string output = options.outputFile.empty() ? "/dev/null" : options.outputFile;
    const int outputFd = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    const int inputFd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (outputFd < 0 || inputFd < 0) {
        return fail("cannot open " + output);
    }
    const pid_t parent = getpid();

    const pid_t pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) {
            _exit(127);  // the test died before the request took effect
        }
        dup2(inputFd, STDIN_FILENO);
        dup2(outputFd, STDOUT_FILENO);
        dup2(outputFd, STDERR_FILENO);
        if (options.inheritedFd >= 0) {
            fcntl(options.inheritedFd, F_SETFD, 0);
        }
        execve(program.c_str(), argv.data(), envp.data());
        _exit(127);
    }
    close(outputFd);
    close(inputFd);
    if (pid < 0) {
        return fail(std::string("fork failed: ") + std::strerror(errno));
    }
    return std::make_unique<ChildProcess>(pid);
}

bool ChildProcess::reap(bool block) {
    if (reaped_) {
        return true;
    }
    const pid_t result = waitpid(pid_, &status_, block ? 0 : WNOHANG);
    if (result == pid_ || (result < 0 && errno == ECHILD)) {
        reaped_ = true;
    }
    return reaped_;
}

bool ChildProcess::reapWithin(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!reap(false)) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

std::optional<int> ChildProcess::waitForExit(std::chrono::milliseconds timeout) {
    if (!reapWithin(timeout) || !WIFEXITED(status_)) {
        return std::nullopt;
    }
    return WEXITSTATUS(status_);
}

void ChildProcess::terminate(std::chrono::milliseconds grace) {
    if (reap(false)) {
        return;
    }
    kill(pid_, SIGTERM);
    if (!reapWithin(grace)) {
        kill(pid_, SIGKILL);
        reap(true);
    }
}

std::string fileText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> linesOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Indented for a failure message.
std::string lastLines(const std::filesystem::path& file, std::size_t lines) {
    const std::vector<std::string> all = linesOf(file);
    std::ostringstream text;
    for (std::size_t i = all.size() > lines ? all.size() - lines : 0; i < all.size(); ++i) {
        text << "  " << all[i] << "\n";
    }
    return text.str();
}

}  // namespace gf::test
