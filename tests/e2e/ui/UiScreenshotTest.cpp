#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <set>

#include "x11/X11DesktopTest.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

// The decorated Settings window and wizard, and the two sheets over Settings.
struct Expected {
    const char* name;
    QSize atLeast;
};
const Expected kScreenshots[] = {
    {"wizard-0-welcome", {500, 400}},
    {"wizard-1-permissions-missing", {500, 400}},
    {"wizard-1-permissions-granted", {500, 400}},
    {"wizard-1-permissions-wayland", {500, 400}},
    {"wizard-2-shortcuts", {500, 400}},
    {"wizard-3-done", {500, 400}},
    {"settings-general", {650, 450}},
    {"settings-general-startup", {650, 450}},
    {"settings-general-hide-icon", {650, 450}},
    {"settings-magnetics", {650, 450}},
    {"settings-ignore-list-picker", {650, 450}},
    {"settings-ignore-list", {650, 450}},
    {"settings-about", {650, 450}},
};

std::size_t distinctColours(const QImage& image) {
    std::set<QRgb> colours;
    for (int y = 0; y < image.height(); y += 3) {
        for (int x = 0; x < image.width(); x += 3) {
            colours.insert(image.pixel(x, y));
        }
    }
    return colours.size();
}

class UiScreenshotTest : public X11DesktopTest {};

// Every tab and every wizard page, drawn by the real X server under openbox, saved under
// build/screenshots for people to look at; the program that takes them also checks that the
// running xterm can be put on the ignore list.
TEST_F(UiScreenshotTest, EveryTabAndWizardPageIsDrawnOnARealServer) {
    desktop().startXterm(40, 40);
    desktop().startXlogo(700, 60, 200, 200);
    QTemporaryDir config;
    const QString folder = QStringLiteral(GLIMMERFOLD_SCREENSHOT_DIR);
    for (const Expected& expected : kScreenshots) {
        QFile::remove(QDir(folder).filePath(QString::fromLatin1(expected.name) + ".png"));
    }

    ChildProcess::Options options;
    options.arguments = {GLIMMERFOLD_UI_SCREENSHOTS, folder.toStdString()};
    options.environment = desktop().clientEnvironment();
    options.environment.emplace_back("QT_QPA_PLATFORM", "xcb");
    options.environment.emplace_back("XDG_CONFIG_HOME", config.path().toStdString());
    options.outputFile = (desktop().directory() / "screenshots.log").string();
    std::string error;
    auto program = ChildProcess::start(options, &error);
    ASSERT_NE(program, nullptr) << error;
    const std::optional<int> status = program->waitForExit(120s);
    QFile log(QString::fromStdString(options.outputFile));
    const QByteArray output = log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    ASSERT_EQ(status, 0) << output.toStdString();

    for (const Expected& expected : kScreenshots) {
        const QString path = QDir(folder).filePath(QString::fromLatin1(expected.name) + ".png");
        QImage image(path);
        ASSERT_FALSE(image.isNull()) << path.toStdString();
        EXPECT_GE(image.width(), expected.atLeast.width()) << expected.name;
        EXPECT_GE(image.height(), expected.atLeast.height()) << expected.name;
        // Text, icons and frame, not an empty or black rectangle.
        EXPECT_GT(distinctColours(image), 20u) << expected.name;
    }
}

}  // namespace
}  // namespace gf::test
