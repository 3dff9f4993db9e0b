#include "app/Permissions.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <fstream>
#include <string>
#include <vector>

#include "UrlRecorder.h"
#include "fake/FakeDesktop.h"
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
            messages.push_back(line.substr(line.find("] ") + 2));
        }
        return messages;
    }

    QTemporaryDir dir;
    FakeDesktop grants;
    UrlRecorder opened{{QStringLiteral("file")}};
};

TEST_F(PermissionsTest, RequestsLogEachAnswerAndOnlyAMissingInputGrantShowsWhereToGetIt) {
    grants.inputMonitoringGranted = false;
    EXPECT_TRUE(requestPermissions(grants));
    EXPECT_EQ(logMessages(), (std::vector<std::string>{
                                 "Requesting post event access (X11 session)...",
                                 "XInput2 event access returned: false",
                                 "X11 window management access returned: true",
                             }));
    grants.accessibilityGranted = false;
    EXPECT_FALSE(requestPermissions(grants));
    EXPECT_EQ(grants.whereToGrantShown, 0);

    grants.inputMonitoringGranted = true;
    requestInputMonitoring(grants);
    EXPECT_EQ(logMessages().back(), "XInput2 event access returned: true");
    EXPECT_TRUE(opened.urls().isEmpty());
    grants.inputMonitoringGranted = false;
    requestInputMonitoring(grants);
    EXPECT_EQ(grants.whereToGrantShown, 1);
    ASSERT_EQ(opened.urls().size(), 1);
    // The page the user gets explains the X11-session requirement.
    QFile page(opened.urls().front().toLocalFile());
    ASSERT_TRUE(page.open(QIODevice::ReadOnly)) << page.fileName().toStdString();
    EXPECT_TRUE(page.readAll().contains("Glimmerfold needs an X11 session"));
}

}  // namespace
}  // namespace gf::test
