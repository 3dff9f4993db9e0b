// Monitors come and go between gestures; the X server is not there or goes away.
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "FaultTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

TEST_F(FaultTest, SnappingFollowsMonitorsAddedAndRemovedBetweenGestures) {
    glimmerfold().writeSettings(GlimmerfoldLauncher::settingsWith());  // magnetics on
    desktop().setMonitors({{0, 0, 640, 800}, {640, 0, 640, 800}});
    auto program = start();
    ASSERT_NE(program, nullptr);
    TestClient& logo = desktop().startXlogo(300, 300, 160, 120);

    // Takes the frame's left edge to `shortBy` pixels short of `seam`, well inside the snapping
    // distance: it lands on the seam when that is a monitor's edge.
    auto leftEdgeNear = [&](int seam, int shortBy, bool seamIsAnEdge) {
        const Rect start = frameOf(logo.window);
        const int x = static_cast<int>(start.midX());
        const int y = static_cast<int>(start.midY());
        const std::optional<Point> origin = hands().begin(kMove, logo.window, x, y);
        ASSERT_TRUE(origin);
        const int pointerX = static_cast<int>(origin->x + (seam - shortBy - start.x));
        const int pointerY = static_cast<int>(origin->y);
        for (int step = 1; step <= 4; ++step) {
            input().movePointerTo(x + (pointerX - x) * step / 4, y + (pointerY - y) * step / 4);
        }
        Rect expected = GestureHands::expectedFrame(kMove, start, *origin, pointerX, pointerY);
        expected.x = seamIsAnEdge ? seam : expected.x;
        EXPECT_TRUE(waitUntil([&] { return probe().frameGeometry(logo.window) == expected; }))
            << "near " << seam << " the frame is at x " << frameOf(logo.window).x << " instead of "
            << expected.x;
        hands().release();
    };
    auto moveAway = [&] { EXPECT_TRUE(hands().perform(kMove, logo.window, -300, 0).began); };

    leftEdgeNear(640, 6, true);
    desktop().setMonitors({{0, 0, 1280, 800}});
    moveAway();
    leftEdgeNear(640, 6, false);
    desktop().setMonitors({{0, 0, 400, 800}, {400, 0, 400, 800}, {800, 0, 480, 800}}, 1);
    moveAway();
    leftEdgeNear(400, 5, true);
    EXPECT_TRUE(program->isRunning());
}

// The X server goes away.

// CPU time the process has used, in seconds, from /proc; also readable while it is a zombie.
double cpuSeconds(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    // Fields after the command name, which is in parentheses and may hold spaces.
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    long ticks = 0;
    for (int index = 3; fields >> field && index <= 15; ++index) {
        if (index == 14 || index == 15) {  // utime, stime
            ticks += std::stol(field);
        }
    }
    return static_cast<double>(ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

// Waits until the child has exited without reaping it, so that its accounting stays readable.
bool waitForExitUnreaped(pid_t pid, std::chrono::milliseconds timeout) {
    return waitUntil(
        [&] {
            siginfo_t info{};
            return ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) ==
                       0 &&
                   info.si_pid == pid;
        },
        timeout);
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
