#include "app/Permissions.h"

#include <QTemporaryDir>
#include <fstream>
#include <vector>

#include "TestHelpers.h"
#include "UrlRecorder.h"
#include "fake/FakeDesktop.h"
#include "model/DebugLog.h"
#include "platform/x11/X11GrantService.h"

namespace gf::test {
namespace {

class PermissionsTest : public ::testing::Test {
  protected:
    PermissionsTest() { setDebugLogPath(logPath()); }

    std::string logPath() const { return dir.filePath("glimmerfold.log").toStdString(); }
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

TEST_F(PermissionsTest,
       RequestsLogEachAnswerAndOnlyAMissingInputGrantShowsWhereToGetItAndWhatIsMissing) {
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
    EXPECT_TRUE(fileContents(opened.urls().front().toLocalFile())
                    .contains("Glimmerfold needs an X11 session"));

    // What is printed names what is missing: the X11 session, or an extension of this server.
    struct Case {
        X11GrantService::InputExtensions extensions;
        const char* session;
        const char* says;
        const char* never;
    };
    const Case cases[] = {
        {{true, true}, "wayland", "log out and choose an X11 (Xorg) session", "XInput"},
        {{true, false}, "x11", "does not offer XInput 2.1", "log out"},
        {{false, true}, "x11", "does not offer the XKEYBOARD extension", "log out"},
        {{false, false}, "x11", "neither XKEYBOARD nor XInput 2.1", "session"},
    };
    for (const Case& c : cases) {
        X11GrantService x11(c.extensions, sessionOfType(c.session));
        const std::string printed = stderrOf([&] { requestInputMonitoring(x11); });
        EXPECT_NE(printed.find(c.says), std::string::npos) << printed;
        EXPECT_EQ(printed.find(c.never), std::string::npos) << printed;
        EXPECT_EQ(lineCount(printed), 1) << printed;
        EXPECT_EQ(x11.whyUnavailable() + "\n", printed);
    }
    X11GrantService complete(true, [](const char*) { return std::optional<std::string>(); });
    EXPECT_EQ(complete.whyUnavailable(), "");
}

}  // namespace
}  // namespace gf::test
