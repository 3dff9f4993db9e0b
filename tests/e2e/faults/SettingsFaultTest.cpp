// A settings file that cannot be read: the real program tells the user and keeps working.
#include <sys/stat.h>

#include "FaultTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

class SettingsFaultTest : public FaultTest {
  protected:
    std::string settingsPath() { return glimmerfold().settingsFile().string(); }

    // The setup wizard, which a start without readable settings opens.
    bool waitForWizard() {
        auto shown = [&] {
            const std::optional<WindowId> window = probe().findClientByClass("Glimmerfold");
            return window && probe().isViewable(*window);
        };
        return waitUntil(shown, 10s);
    }
};

// Garbage lines and a value cut short: the user is told in one line, what parsed is used (setup
// stays completed, so the gestures work), and nothing rewrites the file.
TEST_F(SettingsFaultTest, ACorruptAndTruncatedFileIsReadAsFarAsItGoesAndNotRewritten) {
    const char garbage[] = "\x01\x7f\xfe garbage line\0";
    const std::string whole = GlimmerfoldLauncher::settingsWith(
        {"magneticsEnabled=false", "snapThreshold=4", std::string(garbage, sizeof garbage - 1),
         "autoRaiseDelay=0.5",
         R"ini(ignoreList="@ByteArray([{\"appName\":\"GIMP\",\"bundleIdentifier\":\"org.gimp.GIMP\"}])")ini"});
    const std::string corrupt = whole.substr(0, whole.size() - 25);
    glimmerfold().writeSettings(corrupt);
    auto program = start();
    ASSERT_NE(program, nullptr);
    const std::vector<std::string> lines = glimmerfold().outputLines();
    ASSERT_EQ(lines.size(), 1u) << glimmerfold().output();
    for (const std::string& named :
         {settingsPath(), std::string("malformed lines"), std::string("ignoreList")}) {
        EXPECT_NE(lines[0].find(named), std::string::npos) << lines[0];
    }
    TestClient& logo = desktop().startXlogo(300, 250, 200, 150);
    expectGesturesWork(logo.window, "with a corrupt settings file");
    EXPECT_EQ(glimmerfold().settingsText(), corrupt) << "nothing rewrote the file";
    EXPECT_TRUE(program->isRunning());
}

// Without read permission (which only holds for an ordinary user) every preference takes its
// default, which means a first start: the setup wizard opens. The tray menu still works, and the
// unreadable file is kept aside whole while the change is saved in a new one.
TEST_F(SettingsFaultTest, AFileWithoutReadPermissionGivesDefaultsAndIsKeptAside) {
    const std::string contents = GlimmerfoldLauncher::settingsWith({"magneticsEnabled=false"});
    glimmerfold().writeSettings(contents);
    ::chmod(settingsPath().c_str(), 0);
    auto program = launch();
    ASSERT_NE(program, nullptr);
    ASSERT_TRUE(waitForWizard()) << glimmerfold().output();
    const std::vector<std::string> lines = glimmerfold().outputLines();
    ASSERT_EQ(lines.size(), 1u) << glimmerfold().output();
    EXPECT_NE(lines[0].find("cannot read settings file " + settingsPath()), std::string::npos)
        << lines[0];
    EXPECT_NE(lines[0].find("using defaults"), std::string::npos) << lines[0];

    ASSERT_TRUE(tray().clickRunningItem());
    EXPECT_TRUE(program->isRunning());
    const std::string aside = settingsPath() + ".unreadable";
    ASSERT_TRUE(waitUntil([&] {
        return glimmerfold().settingsText().find("isEnabled=false") != std::string::npos;
    })) << glimmerfold().settingsText();
    ::chmod(aside.c_str(), 0600);
    EXPECT_EQ(fileText(aside), contents);
}

}  // namespace
}  // namespace gf::test
