#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <cmath>
#include <limits>

#include "model/Settings.h"

namespace gf::test {
namespace {

const ModifierKey& shift = ModifierKey::shift();
const ModifierKey& control = ModifierKey::control();
const ModifierKey& option = ModifierKey::option();
const ModifierKey& command = ModifierKey::command();
using Entries = std::vector<IgnoreListEntry>;

class SettingsTest : public ::testing::Test {
  protected:
    // The file sits in a folder that does not exist yet, as on a first start.
    QString path() const { return dir_.filePath("glimmerfold/glimmerfold.conf"); }

    void writeFile(const QByteArray& contents) const {
        QDir().mkpath(dir_.filePath("glimmerfold"));
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }
    static QByteArray readFile(const QString& filePath) {
        QFile file(filePath);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QByteArray fileText() const { return readFile(path()); }

    // QSettings caches the files it has seen in this process; a copy under a fresh name is read
    // from disk, as a later run of the program would read it.
    std::unique_ptr<Settings> reopenFromDisk() {
        const QString copy = dir_.filePath(QStringLiteral("copy%1.conf").arg(++copies_));
        EXPECT_TRUE(QFile::copy(path(), copy));
        return std::make_unique<Settings>(copy);
    }

    QTemporaryDir dir_;
    int copies_ = 0;
};

// An INI line holding `json` as byte data, quoted and escaped the way QSettings writes it.
QByteArray dataLine(const char* key, QByteArray json) {
    return QByteArray(key) + "=\"@ByteArray(" + json.replace("\"", "\\\"") + ")\"\n";
}

// A value unlike `current`, for any preference type.
QVariant differentValue(const QVariant& current) {
    if (current.typeId() == QMetaType::Bool) {
        return !current.toBool();
    }
    if (current.typeId() == QMetaType::Double) {
        return current.toDouble() - 3.25;
    }
    if (current.canConvert<ModifierKeySet>()) {
        return QVariant::fromValue(current.value<ModifierKeySet>() == ModifierKeySet{shift}
                                       ? ModifierKeySet{}
                                       : ModifierKeySet{shift});
    }
    return QVariant::fromValue(Entries{{"XTerm", "xterm"}, {"XTerm", "UXTerm"}});
}

// The defaults themselves are pinned by the behaviour the engine and view tests expect of them.
TEST_F(SettingsTest, EveryPropertyIsWrittenThroughAndReadBackButReadingWritesNothing) {
    Settings settings(path());
    EXPECT_TRUE(QDir(dir_.path()).isEmpty());
    const QMetaObject& meta = Settings::staticMetaObject;
    ASSERT_EQ(meta.propertyCount() - meta.propertyOffset(), 19);
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        EXPECT_TRUE(property.hasNotifySignal()) << property.name();
        ASSERT_TRUE(property.write(&settings, differentValue(property.read(&settings))));
    }
    const auto reread = reopenFromDisk();
    const Settings defaults(dir_.filePath("absent.conf"));
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        EXPECT_EQ(property.read(reread.get()), property.read(&settings)) << property.name();
        EXPECT_NE(property.read(reread.get()), property.read(&defaults)) << property.name();
    }
}

TEST_F(SettingsTest, ReadsBooleansAndNumbersButNotOtherText) {
    const QByteArray contents =
        "; hand-written\n[General]\n"
        "isEnabled=maybe\n"                       // text: default true
        "bringToFrontOnManipulate=0\n"            // number 0: false
        "resizeFromBottomRightOnly=TRUE\n"        // boolean in any case
        "showMenuBarIcon=2\n"                     // a number other than 0/1: default true
        "autoRaiseAllWindows=@ByteArray(true)\n"  // data: default false
        "magneticsEnabled=false, true\n"          // a list: default true
        "autoRaiseDelay = 1\n"                    // integer reads as 1.0
        "snapThreshold=abc\n";                    // text: default 10
    writeFile(contents);
    testing::internal::CaptureStderr();
    Settings settings(path());
    // What cannot be read is named, in one line.
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 1) << report;
    EXPECT_NE(report.find("the values of isEnabled, autoRaiseAllWindows, magneticsEnabled, "
                          "snapThreshold, showMenuBarIcon)"),
              std::string::npos)
        << report;
    EXPECT_EQ(report.find("bringToFront"), std::string::npos) << report;
    EXPECT_TRUE(settings.isEnabled());
    EXPECT_FALSE(settings.bringToFrontOnManipulate());
    EXPECT_TRUE(settings.resizeFromBottomRightOnly());
    EXPECT_TRUE(settings.showMenuBarIcon());
    EXPECT_FALSE(settings.autoRaiseAllWindows());
    EXPECT_TRUE(settings.magneticsEnabled());
    EXPECT_EQ(settings.autoRaiseDelay(), 1.0);
    EXPECT_EQ(settings.snapThreshold(), 10.0);
    EXPECT_EQ(fileText(), contents);  // reading never rewrites the file

    writeFile("[General]\nautoRaiseDelay=abc\nsnapThreshold=true\nhasCompletedSetup=1.0\n");
    testing::internal::CaptureStderr();
    const auto other = reopenFromDisk();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(other->autoRaiseDelay(), 0.25);
    EXPECT_EQ(other->snapThreshold(), 1.0);
    EXPECT_TRUE(other->hasCompletedSetup());

    writeFile("[General]\nisEnabled=false\n");
    testing::internal::CaptureStderr();
    reopenFromDisk();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "nothing to say about a sound file";
}

TEST_F(SettingsTest, UnreadableSetsAndListsFallBackAloneAndAnEmptySetStaysEmpty) {
    writeFile("[General]\n" +
              dataLine("moveModifiers", R"({"keys":[{"name":"control"},{"name":"super"}]})") +
              dataLine("resizeModifiers", R"({"keys":[{"name":"shift"}]})") +
              R"(autoRaiseModifiers="{\"keys\":[{\"name\":\"shift\"}]}")"
              "\n" +
              dataLine("ignoreList", R"([{"bundleIdentifier":"a"}])"));
    testing::internal::CaptureStderr();
    Settings settings(path());
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(settings.moveModifiers(), (ModifierKeySet{control, command}));
    EXPECT_EQ(settings.resizeModifiers(), ModifierKeySet{shift});
    EXPECT_EQ(settings.autoRaiseModifiers(), ModifierKeySet{});  // plain text counts as missing
    EXPECT_TRUE(settings.ignoreList().empty());

    writeFile("[General]\n" + dataLine("moveModifiers", R"({"keys":[]})") +
              dataLine("resizeModifiers", R"({"keys":[{"name":3}]})") +
              dataLine("autoRaiseModifiers", R"({"keys":[{"name":"shift"}]})") +
              R"(ignoreList="[{\"bundleIdentifier\":\"a\",\"appName\":\"A\"}]")"
              "\n");
    testing::internal::CaptureStderr();
    const auto other = reopenFromDisk();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(other->moveModifiers(), ModifierKeySet{});
    EXPECT_EQ(other->resizeModifiers(), (ModifierKeySet{control, option}));
    EXPECT_EQ(other->autoRaiseModifiers(), ModifierKeySet{shift});
    EXPECT_TRUE(other->ignoreList().empty());
}

TEST_F(SettingsTest, SignalsOnlyRealChangesAfterTheValueIsWrittenAndKeepsKeysItDoesNotKnow) {
    writeFile("[General]\nfutureOption=42\n\n[Window]\ngeometry=1 2 3 4\n");
    Settings settings(path());
    QSignalSpy enabledSpy(&settings, &Settings::isEnabledChanged);
    settings.setIsEnabled(true);
    settings.setIsEnabled(false);
    EXPECT_EQ(enabledSpy.count(), 1);

    QSignalSpy thresholdSpy(&settings, &Settings::snapThresholdChanged);
    settings.setSnapThreshold(10.0);  // the default again: written, not announced
    EXPECT_EQ(thresholdSpy.count(), 0);
    EXPECT_TRUE(fileText().contains("snapThreshold=10\n"));

    QByteArray textSeenBySignal;
    QObject::connect(&settings, &Settings::snapThresholdChanged,
                     [&] { textSeenBySignal = fileText(); });
    settings.setSnapThreshold(12.5);
    ASSERT_EQ(thresholdSpy.count(), 1);
    EXPECT_EQ(thresholdSpy.at(0).at(0).toDouble(), 12.5);
    EXPECT_TRUE(textSeenBySignal.contains("snapThreshold=12.5\n"));

    const double nan = std::numeric_limits<double>::quiet_NaN();
    settings.setSnapThreshold(nan);
    settings.setSnapThreshold(nan);  // NaN never equals itself, so it counts as a change
    EXPECT_EQ(thresholdSpy.count(), 3);
    EXPECT_TRUE(std::isnan(reopenFromDisk()->snapThreshold()));

    QSignalSpy moveSpy(&settings, &Settings::moveModifiersChanged);
    settings.setMoveModifiers({command, control});  // same members, other order
    EXPECT_EQ(moveSpy.count(), 0);
    EXPECT_TRUE(fileText().contains("moveModifiers="));

    QSignalSpy listSpy(&settings, &Settings::ignoreListChanged);
    settings.setIgnoreList({{"a", "A"}, {"b", "B"}});
    settings.setIgnoreList({{"a", "A"}, {"b", "B"}});
    settings.setIgnoreList({{"b", "B"}, {"a", "A"}});
    settings.setIgnoreList({{"b", "B"}, {"a", "renamed"}});
    EXPECT_EQ(listSpy.count(), 3);
    // Only the exact identifier is ignored; the display name plays no part.
    EXPECT_TRUE(settings.isIgnored("a"));
    EXPECT_FALSE(settings.isIgnored("A"));
    EXPECT_FALSE(settings.isIgnored("renamed"));

    settings.setStartAtLogin(true);
    const QByteArray text = fileText();
    EXPECT_TRUE(text.contains("futureOption=42\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("[Window]\ngeometry=1 2 3 4\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("startAtLogin=true\n")) << text.toStdString();
}

struct MalformedFile {
    const char* contents;
    bool isEnabled;            // as read: what parsed counts, what did not takes its default
    const char* afterWriting;  // the new file once showInDock is assigned
};

class MalformedSettingsFileTest : public SettingsTest,
                                  public ::testing::WithParamInterface<MalformedFile> {};

TEST_P(MalformedSettingsFileTest, IsReportedReadAsFarAsItParsesAndSetAsideOnTheFirstWrite) {
    const QByteArray broken = GetParam().contents;
    writeFile(broken);
    testing::internal::CaptureStderr();
    Settings settings(path());
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 1) << report;
    EXPECT_NE(report.find(path().toStdString()), std::string::npos) << report;
    EXPECT_NE(report.find("malformed lines"), std::string::npos) << report;

    EXPECT_EQ(settings.isEnabled(), GetParam().isEnabled);
    EXPECT_EQ(settings.moveModifiers(), (ModifierKeySet{control, command}));
    EXPECT_EQ(fileText(), broken);

    testing::internal::CaptureStderr();
    settings.setShowInDock(true);
    const std::string writeReport = testing::internal::GetCapturedStderr();
    EXPECT_NE(writeReport.find("kept the unreadable settings file as"), std::string::npos);
    EXPECT_EQ(writeReport.find("cannot write"), std::string::npos) << writeReport;
    EXPECT_EQ(readFile(path() + ".unreadable"), broken);
    EXPECT_EQ(fileText(), GetParam().afterWriting);
    EXPECT_EQ(reopenFromDisk()->isEnabled(), GetParam().isEnabled);
}

INSTANTIATE_TEST_SUITE_P(
    Samples, MalformedSettingsFileTest,
    ::testing::Values(
        MalformedFile{"[General\nisEnabled=false\n", false,
                      "[General]\nisEnabled=false\nshowInDock=true\n"},
        MalformedFile{"isEnabled=false\nstray line\n", false,
                      "[General]\nisEnabled=false\nshowInDock=true\n"},
        // QSettings would file these keys under [General] when it writes; they were not read.
        MalformedFile{"[]\nisEnabled=false\n", true, "[General]\nshowInDock=true\n"}));

TEST_F(SettingsTest, AnEarlierSetAsideFileIsNotOverwritten) {
    writeFile("[General\nfirst\n");
    QFile::rename(path(), path() + ".unreadable");
    writeFile("[General\nsecond\n");
    testing::internal::CaptureStderr();
    Settings(path()).setShowInDock(true);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(readFile(path() + ".unreadable"), "[General\nfirst\n");
    EXPECT_EQ(readFile(path() + ".unreadable.1"), "[General\nsecond\n");
}

TEST_F(SettingsTest, AStoreThatCannotBeWrittenReportsOnceAndKeepsWorking) {
    QDir().mkpath(path());  // the file's name is taken by a folder
    testing::internal::CaptureStderr();
    Settings settings(path());
    const std::string readReport = testing::internal::GetCapturedStderr();
    EXPECT_NE(readReport.find("cannot read settings file"), std::string::npos) << readReport;

    QSignalSpy spy(&settings, &Settings::snapThresholdChanged);
    testing::internal::CaptureStderr();
    settings.setSnapThreshold(20.0);
    settings.setSnapThreshold(30.0);
    const std::string writeReport = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(writeReport.begin(), writeReport.end(), '\n'), 1) << writeReport;
    EXPECT_NE(writeReport.find("cannot write settings file"), std::string::npos) << writeReport;
    EXPECT_EQ(settings.snapThreshold(), 30.0);
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(SettingsTest, ValuesThatFailedToSaveAreWrittenOnceTheStoreRecovers) {
    const QString blocker = dir_.filePath("glimmerfold");
    QFile(blocker).open(QIODevice::WriteOnly);  // a file where the folder should be
    Settings settings(path());
    testing::internal::CaptureStderr();
    settings.setAutoRaiseDelay(2.0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("cannot write"), std::string::npos);

    QFile::remove(blocker);
    settings.setShowInDock(true);
    EXPECT_EQ(fileText(), "[General]\nautoRaiseDelay=2\nshowInDock=true\n");
}

TEST(SettingsPathTest, FollowsXdgConfigHomeAndFallsBackToDotConfig) {
    const QByteArray saved = qgetenv("XDG_CONFIG_HOME");
    const QString fallback = QDir::homePath() + "/.config/glimmerfold/glimmerfold.conf";
    qputenv("XDG_CONFIG_HOME", "/srv/config");
    EXPECT_EQ(Settings::defaultFilePath(), "/srv/config/glimmerfold/glimmerfold.conf");
    qputenv("XDG_CONFIG_HOME", "relative/config");
    EXPECT_EQ(Settings::defaultFilePath(), fallback);
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(Settings::defaultFilePath(), fallback);
    if (!saved.isNull()) {
        qputenv("XDG_CONFIG_HOME", saved);
    }
}

}  // namespace
}  // namespace gf::test
