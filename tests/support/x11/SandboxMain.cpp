// glimmerfold-test-sandbox --tmp DIR [--keep PATH]... -- PROGRAM [ARGUMENT]...
// As an ordinary user with DIR as /tmp (PATHs kept), so permissions hold for root; 77 if it cannot.
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kCannotSandbox = 77;
constexpr uid_t kUnprivilegedId = 1000;

[[noreturn]] void fail(int status, const std::string& what) {
    std::fprintf(stderr, "glimmerfold-test-sandbox: %s: %s\n", what.c_str(), std::strerror(errno));
    std::exit(status);
}

// The kernel takes each of these files in a single write.
bool writeFile(const char* path, const std::string& text) {
    std::ofstream file(path);
    return static_cast<bool>(file << text << std::flush);
}

// An ordinary user inside keeps no capability on exec, so permissions apply even to root.
void enterUserNamespace() {
    auto mapping = [](unsigned outside) {
        return std::to_string(outside == 0 ? kUnprivilegedId : outside) + " " +
               std::to_string(outside) + " 1";
    };
    const uid_t uid = ::geteuid();
    const gid_t gid = ::getegid();
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        fail(kCannotSandbox, "cannot make a user and mount namespace");
    }
    if (!writeFile("/proc/self/setgroups", "deny") ||
        !writeFile("/proc/self/uid_map", mapping(uid)) ||
        !writeFile("/proc/self/gid_map", mapping(gid))) {
        fail(kCannotSandbox, "cannot map the user into the namespace");
    }
}

void bindOnto(const std::string& source, const std::string& target) {
    if (::mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) {
        fail(kCannotSandbox, "cannot bind " + source + " onto " + target);
    }
}

void replaceTmp(const std::string& privateTmp, const std::vector<std::string>& kept) {
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        fail(kCannotSandbox, "cannot make the mounts private");
    }
    // Opened before /tmp is covered, reached afterwards through /proc/self/fd.
    std::vector<int> keptFds;
    for (const std::string& path : kept) {
        const int fd = ::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0) {
            fail(2, "cannot open " + path);
        }
        keptFds.push_back(fd);
    }
    bindOnto(privateTmp, "/tmp");
    for (std::size_t i = 0; i < kept.size(); ++i) {
        std::error_code ignored;
        std::filesystem::create_directories(kept[i], ignored);
        bindOnto("/proc/self/fd/" + std::to_string(keptFds[i]), kept[i]);
        ::close(keptFds[i]);
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::string privateTmp;
    // The X server's sockets, for clients that do not use the abstract ones.
    std::vector<std::string> kept{"/tmp/.X11-unix"};
    int index = 1;
    for (; index < argc; ++index) {
        const std::string argument = argv[index];
        if (argument == "--") {
            ++index;
            break;
        }
        if (argument == "--tmp" && index + 1 < argc) {
            privateTmp = argv[++index];
        } else if (argument == "--keep" && index + 1 < argc) {
            kept.emplace_back(argv[++index]);
        } else {
            std::fprintf(stderr, "glimmerfold-test-sandbox: unknown argument %s\n", argv[index]);
            return 2;
        }
    }
    if (privateTmp.empty() || index >= argc) {
        std::fprintf(stderr,
                     "usage: glimmerfold-test-sandbox --tmp DIR [--keep PATH]... -- PROGRAM ...\n");
        return 2;
    }
    const pid_t parent = ::getppid();
    enterUserNamespace();
    replaceTmp(privateTmp, kept);
    // A change of namespace may drop the request to die with the test; ask again.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        return 127;
    }
    ::execvp(argv[index], argv + index);
    fail(127, std::string("cannot run ") + argv[index]);
}
