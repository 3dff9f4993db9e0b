#include "app/LoginItem.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace gf::test {
namespace {

class LoginItemTest : public ::testing::Test {
  protected:
    LoginItemTest() : previous_(qgetenv("XDG_CONFIG_HOME")) {
        qputenv("XDG_CONFIG_HOME", dir.path().toUtf8());
    }
    ~LoginItemTest() override { qputenv("XDG_CONFIG_HOME", previous_); }

    QString entryPath() const { return dir.filePath("autostart/glimmerfold.desktop"); }
    QString entryText() const {
        QFile file(entryPath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    QTemporaryDir dir;

  private:
    QByteArray previous_;
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

    // A directory where the entry should be: neither writing nor removing can work, which is
    // printed on standard output only.
    ASSERT_TRUE(QDir().mkpath(entryPath() + "/blocker"));
    testing::internal::CaptureStdout();
    setLaunchAtLogin(true);
    setLaunchAtLogin(false);
    const std::string output = testing::internal::GetCapturedStdout();
    const auto enable = output.find("Failed to enable login item: ");
    const auto disable = output.find("\nFailed to disable login item: ");
    EXPECT_EQ(enable, 0u) << output;
    EXPECT_NE(disable, std::string::npos) << output;
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 2) << output;
}

}  // namespace
}  // namespace gf::test
