#include "app/Permissions.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "UrlRecorder.h"
#include "fake/FakeGrants.h"
#include "model/DebugLog.h"

namespace gf::test {
namespace {

class PermissionsTest : public ::testing::Test {
  protected:
    PermissionsTest() { setDebugLogPath(logPath()); }

    std::string logPath() const { return dir.filePath("glimmerfold.log").toStdString(); }
    // The log's messages, without their timestamps.
    std::vector<std::string> logMessages() const {
        std::ifstream in(logPath());
        std::vector<std::string> messages;
        for (std::string line; std::getline(in, line);) {
            const auto end = line.find("] ");
            messages.push_back(end == std::string::npos ? line : line.substr(end + 2));
        }
        return messages;
    }

    QTemporaryDir dir;
    FakeGrants grants;
    UrlRecorder opened{{QStringLiteral("file")}};
};

TEST_F(PermissionsTest, RequestingBothGrantsLogsEachAnswerAndReturnsTheWindowGrant) {
    grants.setInputMonitoringGranted(false);
    EXPECT_TRUE(requestPermissions(grants));
    EXPECT_EQ(logMessages(), (std::vector<std::string>{
                                 "Requesting post event access (X11 session)...",
                                 "XInput2 event access returned: false",
                                 "X11 window management access returned: true",
                             }));
    EXPECT_EQ(grants.whereToGrantShown(), 0);

    grants.setAccessibilityGranted(false);
    EXPECT_FALSE(requestPermissions(grants));
    EXPECT_EQ(logMessages().back(), "X11 window management access returned: false");
}

TEST_F(PermissionsTest, InputRequestShowsWhereToGetTheGrantOnlyWhenItIsMissing) {
    requestInputMonitoring(grants);
    EXPECT_EQ(logMessages(), std::vector<std::string>{"XInput2 event access returned: true"});
    EXPECT_EQ(grants.whereToGrantShown(), 0);
    EXPECT_TRUE(opened.urls().isEmpty());

    grants.setInputMonitoringGranted(false);
    requestInputMonitoring(grants);
    EXPECT_EQ(logMessages().back(), "XInput2 event access returned: false");
    EXPECT_EQ(grants.whereToGrantShown(), 1);
    ASSERT_EQ(opened.urls().size(), 1);

    // The page the user gets explains the X11-session requirement.
    QFile page(opened.urls().front().toLocalFile());
    ASSERT_TRUE(page.open(QIODevice::ReadOnly)) << page.fileName().toStdString();
    EXPECT_TRUE(page.readAll().contains("Glimmerfold needs an X11 session"));
}

}  // namespace
}  // namespace gf::test
