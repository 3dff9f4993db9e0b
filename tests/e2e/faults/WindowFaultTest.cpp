// The window under a gesture goes away or stops answering; the window manager dies or changes.
#include <signal.h>

#include "FaultTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

TEST_F(FaultTest, WindowsThatVanishOrStopMidGestureLeaveGlimmerfoldWorking) {
    auto program = start();
    ASSERT_NE(program, nullptr);
    TestClient& survivor = desktop().startXlogo(700, 300, 240, 180);
    for (const GestureKind kind : {kMove, kResize}) {
        SCOPED_TRACE(kind == kMove ? "move" : "resize");
        TestClient& doomed = desktop().startXlogo(200, 200, 240, 180);
        const Rect start = frameOf(doomed.window);
        const int x = static_cast<int>(start.maxX() - 20);
        const int y = static_cast<int>(start.maxY() - 20);
        const std::optional<Point> origin = hands().begin(kind, doomed.window, x, y);
        ASSERT_TRUE(origin) << glimmerfold().output();
        input().movePointerTo(x + 30, y + 20);
        ASSERT_TRUE(waitUntil([&] {
            return probe().frameGeometry(doomed.window) ==
                   GestureHands::expectedFrame(kind, start, *origin, x + 30, y + 20);
        }));

        desktop().killClient(doomed);  // every write fails from here until the keys are let go
        for (int step = 1; step <= 10; ++step) {
            input().movePointerTo(x + 30 + 5 * step, y + 20 + 3 * step);
            processEventsFor(10ms);
        }
        hands().release();
        EXPECT_TRUE(program->isRunning()) << glimmerfold().output();
        expectGesturesWork(survivor.window, "after the target vanished");
    }

    TestClient& frozen = desktop().startXlogo(150, 150, 240, 180);
    const Rect start = frameOf(frozen.window);
    const int x = static_cast<int>(start.midX());
    const int y = static_cast<int>(start.midY());
    const std::optional<Point> origin = hands().begin(kMove, frozen.window, x, y);
    ASSERT_TRUE(origin) << glimmerfold().output();
    ASSERT_EQ(::kill(frozen.pid, SIGSTOP), 0);
    input().movePointerTo(x + 60, y + 40);
    EXPECT_TRUE(waitUntil([&] {
        return probe().frameGeometry(frozen.window) ==
               GestureHands::expectedFrame(kMove, start, *origin, x + 60, y + 40);
    })) << "the window manager moves the frame of a stopped client";
    hands().release();

    expectGesturesWork(survivor.window, "while another client is stopped");
    expectGesturesWork(frozen.window, "of the stopped client");
    ::kill(frozen.pid, SIGCONT);
    expectGesturesWork(frozen.window, "once the client runs again");
    EXPECT_TRUE(program->isRunning());
    EXPECT_EQ(glimmerfold().output(), "") << "failures of window calls never reach the user";
}

class WindowManagerFaultTest : public FaultTest {
  protected:
    X11Desktop::Options desktopOptions() const override {
        X11Desktop::Options options = FaultTest::desktopOptions();
        options.windowManager = WindowManager::none;
        return options;
    }

    std::unique_ptr<ChildProcess> startOpenbox(const std::string& logName) {
        const std::filesystem::path directory = desktop().directory() / "wm";
        std::filesystem::create_directories(directory);
        ChildProcess::Options options =
            windowManagerProcess(WindowManager::openbox, directory, desktop().clientEnvironment());
        options.outputFile = (desktop().directory() / logName).string();
        std::string error;
        auto openbox = ChildProcess::start(options, &error);
        EXPECT_NE(openbox, nullptr) << error;
        return openbox;
    }
};

TEST_F(WindowManagerFaultTest, GesturesWorkWithoutOneAndAcrossAKilledAndANewWindowManager) {
    auto program = start();
    ASSERT_NE(program, nullptr);
    TestClient& logo = desktop().startXlogo(200, 200, 240, 180);
    auto openbox = startOpenbox("openbox-1.log");
    ASSERT_TRUE(waitUntil([&] { return probe().isManaged(logo.window); }, 10s))
        << "openbox did not take the window";
    expectGesturesWork(logo.window, "once a window manager started");

    ::kill(openbox->pid(), SIGKILL);
    openbox->waitForExit(5s);  // the server hands the window back to the root
    ASSERT_TRUE(waitUntil([&] { return probe().frameOf(logo.window) == logo.window; }));
    expectGesturesWork(logo.window, "after the window manager was killed");

    auto another = startOpenbox("openbox-2.log");
    ASSERT_TRUE(waitUntil([&] { return probe().frameOf(logo.window) != logo.window; }, 10s))
        << "the new window manager did not frame the window";
    ASSERT_TRUE(waitUntil([&] { return probe().isManaged(logo.window); }));
    expectGesturesWork(logo.window, "under another window manager");
    EXPECT_TRUE(program->isRunning());
    EXPECT_EQ(glimmerfold().output(), "");
}

}  // namespace
}  // namespace gf::test
