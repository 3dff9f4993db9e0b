// The log file at its fixed place in /tmp is a trap; two launches come at the same moment.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "FaultTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

TEST_F(FaultTest, ALogPathThatIsASymbolicLinkIsNotWrittenThrough) {
    const std::filesystem::path victim = desktop().directory() / "someone-elses-file";
    std::ofstream(victim) << "precious\n";
    std::filesystem::create_symlink(victim, glimmerfold().logFile());

    auto program = launch();
    ASSERT_NE(program, nullptr);
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    ASSERT_TRUE(moveBegins(logo.window, 10s)) << glimmerfold().output();
    expectGesturesWork(logo.window, "with a trapped log path");

    EXPECT_EQ(fileText(victim), "precious\n");
    EXPECT_TRUE(std::filesystem::is_symlink(glimmerfold().logFile()));
    EXPECT_EQ(glimmerfold().output(), "");
}

TEST_F(FaultTest, ALogFileOfAnotherUserIsNotWritten) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give a file to another user";
    }
    const std::filesystem::path log = glimmerfold().logFile();
    std::ofstream(log) << "theirs\n";
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(::chown(log.c_str(), kNobody, kNobody), 0);
    ::chmod(log.c_str(), 0666);  // writable by anyone: only the owner check keeps us out

    auto program = launch();
    ASSERT_NE(program, nullptr);
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    ASSERT_TRUE(moveBegins(logo.window, 10s)) << glimmerfold().output();
    expectGesturesWork(logo.window, "with another user's log file");

    EXPECT_EQ(fileText(log), "theirs\n");
    struct stat status {};
    ASSERT_EQ(::stat(log.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, kNobody);
}

// Two launches at the same moment.

TEST_F(FaultTest, OfTwoLaunchesAtOnceExactlyOneKeepsRunning) {
    // Away from the middle of the screen, where the survivor opens its Settings window each time
    // a second launch hands over to it.
    TestClient& logo = desktop().startXlogo(40, 500, 200, 150);
    constexpr int kRounds = 3;
    for (int round = 1; round <= kRounds; ++round) {
        const std::string a = "a" + std::to_string(round) + ".out";
        const std::string b = "b" + std::to_string(round) + ".out";
        auto first = launch(a);
        auto second = launch(b);
        ASSERT_TRUE(first && second);
        ASSERT_TRUE(waitUntil([&] { return !first->isRunning() || !second->isRunning(); }, 15s))
            << "round " << round << ": both still run\n"
            << glimmerfold().output(a) << glimmerfold().output(b);
        std::unique_ptr<ChildProcess>& gone = first->isRunning() ? second : first;
        std::unique_ptr<ChildProcess>& kept = first->isRunning() ? first : second;
        EXPECT_EQ(gone->waitForExit(1s), 0)
            << "round " << round << ": the second launch hands over";
        ASSERT_TRUE(kept->isRunning()) << "round " << round << ": none keeps running\n"
                                       << glimmerfold().output(a) << glimmerfold().output(b);
        ASSERT_TRUE(glimmerfold().waitForEventTaps(static_cast<std::size_t>(round)));
        expectGesturesWork(logo.window, "with one instance left");
        EXPECT_TRUE(kept->isRunning());
        EXPECT_EQ(glimmerfold().eventTapsLogged(), static_cast<std::size_t>(round))
            << "round " << round << ": only one instance made an event tap";
        ::kill(kept->pid(), SIGTERM);
        EXPECT_EQ(kept->waitForExit(10s), 0);
    }
}

// The first launch takes its socket at once but answers only once it has started, which can
// take long on a loaded machine: here it is held stopped in between. A second launch must not
// take the socket from it, or two would run once it goes on.
TEST_F(FaultTest, ALaunchNeverTakesOverFromAFirstThatIsStillStarting) {
    const std::filesystem::path runtime = glimmerfold().runtimeDirectory();
    auto hasSocket = [&] {
        for (const auto& entry : std::filesystem::directory_iterator(runtime)) {
            if (entry.is_socket()) {
                return true;
            }
        }
        return false;
    };
    auto first = launch("first.out");
    ASSERT_TRUE(first && waitUntil(hasSocket, 10s)) << glimmerfold().output("first.out");
    ASSERT_EQ(::kill(first->pid(), SIGSTOP), 0);

    auto second = launch("second.out");
    ASSERT_NE(second, nullptr);
    const std::optional<int> secondStatus = second->waitForExit(15s);
    ::kill(first->pid(), SIGCONT);
    EXPECT_TRUE(secondStatus.has_value()) << "the second launch runs beside the first\n"
                                          << glimmerfold().output("second.out");
    ASSERT_TRUE(glimmerfold().waitForEventTaps(1)) << glimmerfold().output("first.out");
    TestClient& logo = desktop().startXlogo(40, 500, 200, 150);
    expectGesturesWork(logo.window, "with the first instance");
    EXPECT_TRUE(first->isRunning());
    EXPECT_EQ(glimmerfold().eventTapsLogged(), 1u) << "only one instance made an event tap";
}

}  // namespace
}  // namespace gf::test
