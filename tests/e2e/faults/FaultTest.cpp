// Glimmerfold, the real program, while the rest of the desktop misbehaves. Each test checks that
// it keeps working afterwards (the next gesture moves or resizes a window to the pixel) and that
// nothing saved is lost.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "GestureHands.h"
#include "GlimmerfoldUnderTest.h"
#include "TrayMenu.h"
#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

constexpr auto kMove = GestureKind::move;
constexpr auto kResize = GestureKind::resize;

// Magnetics would pull a frame that ends near another window's edge; most tests want the frame
// exactly where the pointer took it.
const std::vector<std::string> kNoMagnetics{"magneticsEnabled=false"};

class FaultTest : public X11DesktopTest {
  protected:
    void SetUp() override {
        if (const auto reason = GlimmerfoldUnderTest::sandboxUnavailable()) {
            GTEST_SKIP() << *reason;
        }
        X11DesktopTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        glimmerfold_ = std::make_unique<GlimmerfoldUnderTest>(desktop());
        hands_ = std::make_unique<GestureHands>(desktop());
        tray_ = std::make_unique<TrayMenu>(desktop());
        glimmerfold_->writeSettings(GlimmerfoldUnderTest::settingsWith(kNoMagnetics));
        // Without a tray Glimmerfold opens its Settings window after a while, in the way of the
        // gestures.
        std::string error;
        ASSERT_TRUE(tray().startTrayHost(&error)) << error;
    }

    // The programs a test started were stopped when its body ended; under the sanitizers that is
    // when leaks are reported.
    void TearDown() override {
        if (hands_) {
            hands_->release();
        }
        if (glimmerfold_) {
            EXPECT_EQ(glimmerfold_->sanitizerReports(), "");
        }
    }

    GlimmerfoldUnderTest& glimmerfold() { return *glimmerfold_; }
    GestureHands& hands() { return *hands_; }
    TrayMenu& tray() { return *tray_; }

    // Starts the program and waits until it reacts to the keys.
    std::unique_ptr<ChildProcess> start(const std::string& outputName = "glimmerfold.out") {
        const std::size_t tapsBefore = eventTapsLogged();
        auto process = glimmerfold().launch(outputName);
        EXPECT_TRUE(process && glimmerfold().waitForEventTaps(tapsBefore + 1))
            << "Glimmerfold did not start its event tap\n"
            << glimmerfold().output(outputName);
        return process;
    }

    std::size_t eventTapsLogged() const {
        std::size_t count = 0;
        for (const std::string& line : glimmerfold_->logLines()) {
            count += line.find("[EventTap] Created") != std::string::npos ? 1 : 0;
        }
        return count;
    }

    Rect frameOf(WindowId window) const {
        const std::optional<Rect> frame = probe().frameGeometry(window);
        EXPECT_TRUE(frame) << "window " << window << " has no frame";
        return frame.value_or(Rect{});
    }

    // Moves and resizes of `window` land to the pixel; the window ends where it started.
    void expectGesturesWork(WindowId window, const std::string& when) {
        for (const int sign : {1, -1}) {
            const GestureOutcome move = hands().perform(kMove, window, sign * 40, sign * 30);
            EXPECT_TRUE(move.exact()) << "move " << when << ": " << move << "\n"
                                      << glimmerfold().output();
            const GestureOutcome resize = hands().perform(kResize, window, sign * 30, sign * 20);
            EXPECT_TRUE(resize.exact()) << "resize " << when << ": " << resize << "\n"
                                        << glimmerfold().output();
        }
    }

    // A gesture that Glimmerfold must ignore: the frame does not follow within the time.
    void expectNoMove(WindowId window) {
        const Rect before = frameOf(window);
        EXPECT_FALSE(hands().begin(kMove, window, static_cast<int>(before.midX()),
                                   static_cast<int>(before.midY()), 1500ms))
            << "the window followed the pointer";
        hands().release();
    }

    std::unique_ptr<GlimmerfoldUnderTest> glimmerfold_;
    std::unique_ptr<GestureHands> hands_;
    std::unique_ptr<TrayMenu> tray_;
};

// ---------------------------------------------------------------------------------------------
// The window under the gesture goes away or stops answering.

class TargetDestroyedTest : public FaultTest, public ::testing::WithParamInterface<GestureKind> {};

TEST_P(TargetDestroyedTest, MidGestureLeavesGlimmerfoldWorking) {
    const GestureKind kind = GetParam();
    auto program = start();
    ASSERT_NE(program, nullptr);
    TestClient& doomed = desktop().startXlogo(200, 200, 240, 180);
    TestClient& survivor = desktop().startXlogo(700, 300, 240, 180);

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

    desktop().killClient(doomed);
    // The gesture goes on over a window that is gone: every write fails until the keys are let go.
    for (int step = 1; step <= 10; ++step) {
        input().movePointerTo(x + 30 + 5 * step, y + 20 + 3 * step);
        processEventsFor(10ms);
    }
    hands().release();

    EXPECT_TRUE(program->isRunning()) << glimmerfold().output();
    expectGesturesWork(survivor.window, "after the target vanished");
    EXPECT_TRUE(program->isRunning());
    EXPECT_EQ(glimmerfold().output(), "") << "failures of window calls never reach the user";
}

INSTANTIATE_TEST_SUITE_P(MoveAndResize, TargetDestroyedTest, ::testing::Values(kMove, kResize),
                         [](const auto& info) {
                             return info.param == kMove ? std::string("Move") : "Resize";
                         });

TEST_F(FaultTest, AStoppedClientsWindowStillFollowsAndOthersStayResponsive) {
    auto program = start();
    ASSERT_NE(program, nullptr);
    TestClient& frozen = desktop().startXlogo(150, 150, 240, 180);
    TestClient& other = desktop().startXlogo(700, 350, 240, 180);

    // Stopped in the middle of a move.
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

    expectGesturesWork(other.window, "while another client is stopped");
    expectGesturesWork(frozen.window, "of the stopped client");
    ::kill(frozen.pid, SIGCONT);
    expectGesturesWork(frozen.window, "once the client runs again");
    EXPECT_TRUE(program->isRunning());
}

// ---------------------------------------------------------------------------------------------
// The window manager: none, killed, another one started.

class WindowManagerFaultTest : public FaultTest {
  protected:
    X11Desktop::Options desktopOptions() const override {
        X11Desktop::Options options;
        options.windowManager = WindowManager::none;
        return options;
    }

    // openbox without bindings or margins, as the harness runs it, so frames land where asked.
    std::unique_ptr<ChildProcess> startOpenbox(const std::string& logName) {
        const std::filesystem::path config = desktop().directory() / "openbox-rc.xml";
        std::ofstream(config) << R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <resistance><strength>0</strength><screen_edge_strength>0</screen_edge_strength></resistance>
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <theme><animateIconify>no</animateIconify></theme>
  <desktops><number>1</number></desktops>
  <margins><top>0</top><bottom>0</bottom><left>0</left><right>0</right></margins>
  <keyboard></keyboard><mouse></mouse><menu></menu><applications></applications>
</openbox_config>
)";
        ChildProcess::Options options;
        options.arguments = {"openbox", "--config-file", config.string(), "--sm-disable"};
        options.environment = desktop().clientEnvironment();
        options.environment.emplace_back("XDG_CONFIG_HOME",
                                         (desktop().directory() / "wm").string());
        options.environment.emplace_back("XDG_CACHE_HOME", (desktop().directory() / "wm").string());
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
    expectGesturesWork(logo.window, "without a window manager");

    auto openbox = startOpenbox("openbox-1.log");
    ASSERT_TRUE(waitUntil([&] { return probe().isManaged(logo.window); }, 10s))
        << "openbox did not take the window";
    expectGesturesWork(logo.window, "once a window manager started");

    ::kill(openbox->pid(), SIGKILL);
    openbox->waitForExit(5s);
    // The server hands the window back to the root when the frame's owner dies.
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

// ---------------------------------------------------------------------------------------------
// Monitors come and go between gestures; snapping follows them.

TEST_F(FaultTest, SnappingFollowsMonitorsAddedAndRemovedBetweenGestures) {
    glimmerfold().writeSettings(GlimmerfoldUnderTest::settingsWith());  // magnetics on
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

// ---------------------------------------------------------------------------------------------
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
    options.arguments = {GLIMMERFOLD_EXECUTABLE};
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

// ---------------------------------------------------------------------------------------------
// A settings file that cannot be read, or not written.

class SettingsFaultTest : public FaultTest {
  protected:
    std::string settingsPath() const { return glimmerfold_->settingsFile().string(); }

    // The setup wizard, which a start without readable settings opens.
    bool waitForWizard() {
        return waitUntil(
            [&] {
                const std::optional<WindowId> window = probe().findClientByClass("Glimmerfold");
                return window && probe().isViewable(*window);
            },
            10s);
    }
};

TEST_F(SettingsFaultTest, ACorruptFileIsReadAsFarAsItGoesAndKeptWholeWhenASettingChanges) {
    const char garbage[] = "\x01\x7f\xfe garbage line\0\n";
    const std::string corrupt =
        GlimmerfoldUnderTest::settingsWith({"magneticsEnabled=false", "snapThreshold=4"}) +
        std::string(garbage, sizeof garbage - 1) + "autoRaiseDelay=0.5\n";
    glimmerfold().writeSettings(corrupt);
    auto program = start();
    ASSERT_NE(program, nullptr);
    const std::vector<std::string> lines = glimmerfold().outputLines();
    ASSERT_EQ(lines.size(), 1u) << glimmerfold().output();
    EXPECT_NE(lines[0].find(settingsPath()), std::string::npos) << lines[0];
    EXPECT_NE(lines[0].find("malformed lines"), std::string::npos) << lines[0];

    // What parsed is used: setup stays completed, so the gestures work.
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    expectGesturesWork(logo.window, "with a corrupt settings file");
    EXPECT_EQ(glimmerfold().settingsText(), corrupt) << "nothing rewrote the file";

    // The user switches Glimmerfold off: the broken file is kept whole, what parsed goes on.
    ASSERT_TRUE(tray().clickRunningItem());
    ASSERT_TRUE(waitUntil([&] {
        return glimmerfold().settingsText().find("isEnabled=false") != std::string::npos;
    })) << glimmerfold().settingsText();
    EXPECT_EQ(fileText(settingsPath() + ".unreadable"), corrupt);
    const std::string rewritten = glimmerfold().settingsText();
    for (const char* kept : {"hasCompletedSetup=true", "magneticsEnabled=false", "snapThreshold=4",
                             "autoRaiseDelay=0.5", "isEnabled=false"}) {
        EXPECT_NE(rewritten.find(kept), std::string::npos) << kept << " is lost:\n" << rewritten;
    }
    expectNoMove(logo.window);
    ASSERT_TRUE(tray().clickRunningItem());
    ASSERT_TRUE(glimmerfold().waitForEventTaps(2));
    expectGesturesWork(logo.window, "once switched on again");
    EXPECT_EQ(glimmerfold().outputLines().size(), 2u) << "one more line, for the file set aside:\n"
                                                      << glimmerfold().output();
}

TEST_F(SettingsFaultTest, ATruncatedFileLosesOnlyTheValueThatWasCut) {
    const std::string whole = GlimmerfoldUnderTest::settingsWith(
        {"magneticsEnabled=false", "autoRaiseDelay=0.5",
         R"ini(ignoreList="@ByteArray([{\"appName\":\"GIMP\",\"bundleIdentifier\":\"org.gimp.GIMP\"}])")ini"});
    const std::string truncated = whole.substr(0, whole.size() - 25);
    glimmerfold().writeSettings(truncated);
    auto program = start();
    ASSERT_NE(program, nullptr);
    const std::vector<std::string> lines = glimmerfold().outputLines();
    ASSERT_EQ(lines.size(), 1u) << glimmerfold().output();
    EXPECT_NE(lines[0].find(settingsPath()), std::string::npos) << lines[0];
    EXPECT_NE(lines[0].find("ignoreList"), std::string::npos) << lines[0];

    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    expectGesturesWork(logo.window, "with a truncated settings file");
    EXPECT_EQ(glimmerfold().settingsText(), truncated) << "nothing rewrote the file";
    EXPECT_TRUE(program->isRunning());
}

TEST_F(SettingsFaultTest, AReadOnlyFileIsUsedAndAFailedSaveIsSaidOnce) {
    const std::string contents = GlimmerfoldUnderTest::settingsWith(kNoMagnetics);
    glimmerfold().writeSettings(contents);
    ::chmod(settingsPath().c_str(), 0444);
    auto program = start();
    ASSERT_NE(program, nullptr);
    EXPECT_EQ(glimmerfold().output(), "") << "a read-only file reads normally";
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    expectGesturesWork(logo.window, "with a read-only settings file");

    ASSERT_TRUE(tray().clickRunningItem());  // off: the change holds for this run
    expectNoMove(logo.window);
    ASSERT_TRUE(tray().clickRunningItem());  // and on again
    ASSERT_TRUE(glimmerfold().waitForEventTaps(2));
    expectGesturesWork(logo.window, "after two changes that could not be saved");

    const std::vector<std::string> lines = glimmerfold().outputLines();
    ASSERT_EQ(lines.size(), 1u) << glimmerfold().output();
    EXPECT_NE(lines[0].find("cannot write settings file " + settingsPath()), std::string::npos)
        << lines[0];
    EXPECT_EQ(glimmerfold().settingsText(), contents);
}

class UnreadableSettingsTest : public SettingsFaultTest,
                               public ::testing::WithParamInterface<const char*> {};

// Without readable settings every preference takes its default, which means a first start: the
// setup wizard opens. The tray menu still works, and what the user had is not touched.
TEST_P(UnreadableSettingsTest, DefaultsAreUsedAndTheStoreIsLeftAlone) {
    const std::string kind = GetParam();
    const std::string contents = GlimmerfoldUnderTest::settingsWith(kNoMagnetics);
    const std::filesystem::path path = glimmerfold().settingsFile();
    if (kind == "directory") {
        std::filesystem::remove(path);
        std::filesystem::create_directories(path);
        std::ofstream(path / "inside") << contents;
    } else {
        glimmerfold().writeSettings(contents);
        ::chmod(path.c_str(), 0);
    }
    auto program = glimmerfold().launch();
    ASSERT_NE(program, nullptr);
    ASSERT_TRUE(waitForWizard()) << glimmerfold().output();
    std::vector<std::string> lines = glimmerfold().outputLines();
    ASSERT_EQ(lines.size(), 1u) << glimmerfold().output();
    EXPECT_NE(lines[0].find("cannot read settings file " + settingsPath()), std::string::npos)
        << lines[0];
    EXPECT_NE(lines[0].find("using defaults"), std::string::npos) << lines[0];

    ASSERT_TRUE(tray().clickRunningItem());
    EXPECT_TRUE(program->isRunning());
    if (kind == "directory") {
        EXPECT_TRUE(waitUntil([&] { return glimmerfold().outputLines().size() == 2; }));
        lines = glimmerfold().outputLines();
        ASSERT_EQ(lines.size(), 2u) << glimmerfold().output();
        EXPECT_NE(lines[1].find("cannot write settings file"), std::string::npos) << lines[1];
        EXPECT_EQ(fileText(path / "inside"), contents);
    } else {
        // The unreadable file is kept aside whole, and the change is saved in a new one.
        const std::string aside = settingsPath() + ".unreadable";
        ASSERT_TRUE(waitUntil([&] {
            return glimmerfold().settingsText().find("isEnabled=false") != std::string::npos;
        })) << glimmerfold().settingsText();
        ::chmod(aside.c_str(), 0600);
        EXPECT_EQ(fileText(aside), contents);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, UnreadableSettingsTest,
                         ::testing::Values("directory", "withoutReadPermission"));

// ---------------------------------------------------------------------------------------------
// Killed right after a setting changed: the change is on disk.

TEST_F(SettingsFaultTest, SigkillRightAfterAChangeKeepsTheChange) {
    auto program = start();
    ASSERT_NE(program, nullptr);
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);

    ASSERT_TRUE(tray().clickRunningItem());  // switched off
    ASSERT_TRUE(waitUntil(
        [&] { return glimmerfold().settingsText().find("isEnabled=false") != std::string::npos; }));
    ::kill(program->pid(), SIGKILL);
    program->waitForExit(5s);

    auto second = glimmerfold().launch("second.out");
    ASSERT_NE(second, nullptr);
    ASSERT_TRUE(tray().waitForIcon()) << glimmerfold().output("second.out");
    expectNoMove(logo.window);
    EXPECT_EQ(eventTapsLogged(), 1u) << "a start switched off makes no event tap";

    ASSERT_TRUE(tray().clickRunningItem());  // switched on
    ASSERT_TRUE(glimmerfold().waitForEventTaps(2));
    ::kill(second->pid(), SIGKILL);
    second->waitForExit(5s);

    auto third = start("third.out");
    ASSERT_NE(third, nullptr);
    expectGesturesWork(logo.window, "after the restart");
    for (const char* kept : {"hasCompletedSetup=true", "magneticsEnabled=false"}) {
        EXPECT_NE(glimmerfold().settingsText().find(kept), std::string::npos) << kept;
    }
}

// ---------------------------------------------------------------------------------------------
// The log file at its fixed place in /tmp is a trap.

TEST_F(FaultTest, ALogPathThatIsASymbolicLinkIsNotWrittenThrough) {
    const std::filesystem::path victim = desktop().directory() / "someone-elses-file";
    std::ofstream(victim) << "precious\n";
    std::filesystem::create_symlink(victim, glimmerfold().logFile());

    auto program = glimmerfold().launch();
    ASSERT_NE(program, nullptr);
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    // No log line tells when it is ready; the first gesture retries until it is.
    const Rect start = frameOf(logo.window);
    ASSERT_TRUE(hands().begin(kMove, logo.window, static_cast<int>(start.midX()),
                              static_cast<int>(start.midY()), 10s))
        << glimmerfold().output();
    hands().release();
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

    auto program = glimmerfold().launch();
    ASSERT_NE(program, nullptr);
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    const Rect start = frameOf(logo.window);
    ASSERT_TRUE(hands().begin(kMove, logo.window, static_cast<int>(start.midX()),
                              static_cast<int>(start.midY()), 10s))
        << glimmerfold().output();
    hands().release();
    expectGesturesWork(logo.window, "with another user's log file");

    EXPECT_EQ(fileText(log), "theirs\n");
    struct stat status {};
    ASSERT_EQ(::stat(log.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, kNobody);
}

// ---------------------------------------------------------------------------------------------
// Two launches at the same moment.

TEST_F(FaultTest, OfTwoLaunchesAtOnceExactlyOneKeepsRunning) {
    // Away from the middle of the screen, where the survivor opens its Settings window each time
    // a second launch hands over to it.
    TestClient& logo = desktop().startXlogo(40, 500, 200, 150);
    constexpr int kRounds = 3;
    for (int round = 1; round <= kRounds; ++round) {
        const std::string a = "a" + std::to_string(round) + ".out";
        const std::string b = "b" + std::to_string(round) + ".out";
        auto first = glimmerfold().launch(a);
        auto second = glimmerfold().launch(b);
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
        EXPECT_EQ(eventTapsLogged(), static_cast<std::size_t>(round))
            << "round " << round << ": only one instance made an event tap";
        ::kill(kept->pid(), SIGTERM);
        EXPECT_EQ(kept->waitForExit(10s), 0);
    }
}

// The first launch takes its socket at once but answers only once it has started, which can
// take long on a loaded machine: here it is held stopped in between. A second launch must not
// take the socket from it, or two would run once it goes on.
TEST_F(FaultTest, ALaunchNeverTakesOverFromAFirstThatIsStillStarting) {
    const std::filesystem::path runtime = desktop().directory() / "home/runtime";
    auto hasSocket = [&] {
        for (const auto& entry : std::filesystem::directory_iterator(runtime)) {
            if (entry.is_socket()) {
                return true;
            }
        }
        return false;
    };
    auto first = glimmerfold().launch("first.out");
    ASSERT_TRUE(first && waitUntil(hasSocket, 10s)) << glimmerfold().output("first.out");
    ASSERT_EQ(::kill(first->pid(), SIGSTOP), 0);

    auto second = glimmerfold().launch("second.out");
    ASSERT_NE(second, nullptr);
    const std::optional<int> secondStatus = second->waitForExit(15s);
    ::kill(first->pid(), SIGCONT);
    EXPECT_TRUE(secondStatus.has_value()) << "the second launch runs beside the first\n"
                                          << glimmerfold().output("second.out");
    ASSERT_TRUE(glimmerfold().waitForEventTaps(1)) << glimmerfold().output("first.out");
    TestClient& logo = desktop().startXlogo(40, 500, 200, 150);
    expectGesturesWork(logo.window, "with the first instance");
    EXPECT_TRUE(first->isRunning());
    EXPECT_EQ(eventTapsLogged(), 1u) << "only one instance made an event tap";
}

}  // namespace
}  // namespace gf::test
