#include "app/LoginItem.h"

#include <QDir>
#include <QTemporaryDir>

#include "TestHelpers.h"

namespace gf::test {
namespace {

class LoginItemTest : public ::testing::Test {
  protected:
    QString entryPath() const { return dir.filePath("autostart/glimmerfold.desktop"); }
    QString entryText() const { return QString::fromUtf8(fileContents(entryPath())); }

    QTemporaryDir dir;
    ScopedEnvironment configHome{"XDG_CONFIG_HOME", dir.path().toUtf8()};
};

TEST_F(LoginItemTest, WritesAnAutostartEntryForThisProgramAndRemovesIt) {
    EXPECT_EQ(autostartEntryPath(), entryPath());
    testing::internal::CaptureStdout();
    setLaunchAtLogin(true);
    const QString entry = entryText();
    EXPECT_TRUE(entry.startsWith("[Desktop Entry]\n"));
    EXPECT_TRUE(entry.contains("\nType=Application\n"));
    EXPECT_TRUE(entry.contains("\nExec=" + QCoreApplication::applicationFilePath() + "\n"))
        << entry.toStdString();

    setLaunchAtLogin(true);  // again: still one entry, still fine
    EXPECT_EQ(entryText(), entry);
    setLaunchAtLogin(false);
    EXPECT_FALSE(QFile::exists(entryPath()));
    setLaunchAtLogin(false);  // nothing to remove is not a failure
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

    // A directory where the entry should be: both failures are printed on standard output only.
    ASSERT_TRUE(QDir().mkpath(entryPath() + "/blocker"));
    testing::internal::CaptureStdout();
    setLaunchAtLogin(true);
    setLaunchAtLogin(false);
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(output.find("Failed to enable login item: "), 0u) << output;
    EXPECT_NE(output.find("\nFailed to disable login item: "), std::string::npos) << output;
    EXPECT_EQ(lineCount(output), 2) << output;
}

}  // namespace
}  // namespace gf::test
