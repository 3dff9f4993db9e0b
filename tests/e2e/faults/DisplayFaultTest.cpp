// The X server is not there or goes away.
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "FaultTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

// CPU time the process has used, in seconds, from /proc; also readable while it is a zombie.
double cpuSeconds(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    // Fields after the command name, which is in parentheses and may hold spaces.
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    long ticks = 0;
    for (int index = 3; index <= 15 && fields >> field; ++index) {
        ticks += index >= 14 ? std::stol(field) : 0;  // utime, stime
    }
    return static_cast<double>(ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

// Waits until the child has exited without reaping it, so that its accounting stays readable.
bool waitForExitUnreaped(pid_t pid, std::chrono::milliseconds timeout) {
    auto exited = [&] {
        siginfo_t info{};
        const int flags = WEXITED | WNOHANG | WNOWAIT;
        return ::waitid(P_PID, static_cast<id_t>(pid), &info, flags) == 0 && info.si_pid == pid;
    };
    return waitUntil(exited, timeout);
}

// No server answers at $DISPLAY: one line, said before the toolkit would abort with its own.
TEST_F(FaultTest, WithNoServerAtTheDisplayItSaysSoInOneLine) {
    const std::filesystem::path output = desktop().directory() / "unreachable.out";
    ChildProcess::Options options;
    options.arguments = {GlimmerfoldLauncher::executable()};
    options.environment = {{"DISPLAY", ":4095"},
                           {"XDG_CONFIG_HOME", (desktop().directory() / "config").string()}};
    options.outputFile = output.string();
    std::string error;
    auto program = ChildProcess::start(options, &error);
    ASSERT_NE(program, nullptr) << error;
    EXPECT_EQ(program->waitForExit(10s), 1);
    EXPECT_EQ(fileText(output),
              "Glimmerfold cannot use the X display: cannot connect to the X display :4095\n");
}

TEST_F(FaultTest, WhenTheServerGoesAwayItExitsWithinASecondWithOneLine) {
    auto program = start();
    ASSERT_NE(program, nullptr);
    const double cpuBefore = cpuSeconds(program->pid());

    desktop().killServer();
    const auto killed = std::chrono::steady_clock::now();
    const bool exited = waitForExitUnreaped(program->pid(), 3s);
    const auto took = std::chrono::steady_clock::now() - killed;
    ASSERT_TRUE(exited) << "still running 3 s after the server went";
    EXPECT_LT(took, 1s) << "exited after "
                        << std::chrono::duration_cast<std::chrono::milliseconds>(took).count()
                        << " ms";
    const double cpuUsed = cpuSeconds(program->pid()) - cpuBefore;
    EXPECT_LT(cpuUsed, 0.3) << "it spun before exiting";

    EXPECT_NE(program->waitForExit(1s), 0);
    // Glimmerfold's line, or the toolkit's when it noticed first; never both.
    const std::vector<std::string> lines = glimmerfold().outputLines();
    ASSERT_EQ(lines.size(), 1u) << glimmerfold().output();
    EXPECT_NE(lines.front().find("server"), std::string::npos) << lines.front();
}

}  // namespace
}  // namespace gf::test
