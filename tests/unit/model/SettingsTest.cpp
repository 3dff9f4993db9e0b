
#include <QDir>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <cmath>
#include <limits>

#include "TestHelpers.h"
#include "model/Settings.h"

namespace gf::test {
namespace {

const ModifierKey& shift = ModifierKey::shift();
const ModifierKey& control = ModifierKey::control();
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
    QByteArray fileText() const { return fileContents(path()); }

    // QSettings caches the files this process has seen; a fresh copy is read as a later run would.
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

QVariant differentValue(const QVariant& current) {
    if (current.typeId() == QMetaType::Bool) {
        return !current.toBool();
    }
    if (current.typeId() == QMetaType::Double) {
        return current.toDouble() - 3.25;
    }
    if (current.canConvert<ModifierKeySet>()) {
        return QVariant::fromValue(ModifierKeySet{shift});  // no set's default
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
    std::unique_ptr<Settings> read;
    const std::string report = stderrOf([&] { read = std::make_unique<Settings>(path()); });
    const Settings& settings = *read;
    EXPECT_EQ(lineCount(report), 1) << report;  // what cannot be read is named, in one line
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
    std::unique_ptr<Settings> other;
    stderrOf([&] { other = reopenFromDisk(); });
    EXPECT_EQ(other->autoRaiseDelay(), 0.25);
    EXPECT_EQ(other->snapThreshold(), 1.0);
    EXPECT_TRUE(other->hasCompletedSetup());

    writeFile("[General]\nisEnabled=false\n");
    EXPECT_EQ(stderrOf([&] { reopenFromDisk(); }), "") << "nothing to say about a sound file";
}

TEST_F(SettingsTest, UnreadableSetsAndListsFallBackAloneAndAnEmptySetStaysEmpty) {
    writeFile("[General]\n" +
              dataLine("moveModifiers", R"({"keys":[{"name":"control"},{"name":"super"}]})") +
              dataLine("resizeModifiers", R"({"keys":[{"name":"shift"}]})") +
              R"(autoRaiseModifiers="{\"keys\":[{\"name\":\"shift\"}]}")"
              "\n" +
              dataLine("ignoreList", R"([{"bundleIdentifier":"a"}])"));
    std::unique_ptr<Settings> settings;
    stderrOf([&] { settings = std::make_unique<Settings>(path()); });
    EXPECT_EQ(settings->moveModifiers(), (ModifierKeySet{control, command}));
    EXPECT_EQ(settings->resizeModifiers(), ModifierKeySet{shift});
    EXPECT_EQ(settings->autoRaiseModifiers(), ModifierKeySet{});  // plain text counts as missing
    EXPECT_TRUE(settings->ignoreList().empty());

    writeFile("[General]\n" + dataLine("moveModifiers", R"({"keys":[]})") +
              dataLine("resizeModifiers", R"({"keys":[{"name":3}]})") +
              dataLine("autoRaiseModifiers", R"({"keys":[{"name":"shift"}]})") +
              R"(ignoreList="[{\"bundleIdentifier\":\"a\",\"appName\":\"A\"}]")"
              "\n");
    std::unique_ptr<Settings> other;
    stderrOf([&] { other = reopenFromDisk(); });
    EXPECT_EQ(other->moveModifiers(), ModifierKeySet{});
    EXPECT_EQ(other->resizeModifiers(), (ModifierKeySet{control, ModifierKey::option()}));
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
    std::unique_ptr<Settings> read;
    const std::string report = stderrOf([&] { read = std::make_unique<Settings>(path()); });
    Settings& settings = *read;
    EXPECT_EQ(lineCount(report), 1) << report;
    EXPECT_NE(report.find(path().toStdString()), std::string::npos) << report;
    EXPECT_NE(report.find("malformed lines"), std::string::npos) << report;

    EXPECT_EQ(settings.isEnabled(), GetParam().isEnabled);
    EXPECT_EQ(settings.moveModifiers(), (ModifierKeySet{control, command}));
    EXPECT_EQ(fileText(), broken);

    const std::string writeReport = stderrOf([&] { settings.setShowInDock(true); });
    EXPECT_NE(writeReport.find("kept the unreadable settings file as"), std::string::npos);
    EXPECT_EQ(writeReport.find("cannot write"), std::string::npos) << writeReport;
    EXPECT_EQ(fileContents(path() + ".unreadable"), broken);
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
    stderrOf([&] { Settings(path()).setShowInDock(true); });
    EXPECT_EQ(fileContents(path() + ".unreadable"), "[General\nfirst\n");
    EXPECT_EQ(fileContents(path() + ".unreadable.1"), "[General\nsecond\n");
}

TEST_F(SettingsTest, AStoreThatCannotBeUsedReportsOnceKeepsWorkingAndCatchesUpOnceItRecovers) {
    QDir().mkpath(path());  // the file's name is taken by a folder
    std::unique_ptr<Settings> read;
    const std::string readReport = stderrOf([&] { read = std::make_unique<Settings>(path()); });
    Settings& settings = *read;
    EXPECT_NE(readReport.find("cannot read settings file"), std::string::npos) << readReport;

    QSignalSpy spy(&settings, &Settings::snapThresholdChanged);
    const std::string writeReport = stderrOf([&] {
        settings.setAutoRaiseDelay(2.0);
        settings.setSnapThreshold(30.0);
    });
    EXPECT_EQ(lineCount(writeReport), 1) << writeReport;
    EXPECT_NE(writeReport.find("cannot write settings file"), std::string::npos) << writeReport;
    EXPECT_EQ(settings.snapThreshold(), 30.0);
    EXPECT_EQ(spy.count(), 1);

    QDir(path()).removeRecursively();
    settings.setShowInDock(true);
    EXPECT_EQ(fileText(), "[General]\nautoRaiseDelay=2\nshowInDock=true\nsnapThreshold=30\n");
}

TEST(SettingsPathTest, FollowsXdgConfigHomeAndFallsBackToDotConfig) {
    const ScopedEnvironment configHome("XDG_CONFIG_HOME", "/srv/config");
    const QString fallback = QDir::homePath() + "/.config/glimmerfold/glimmerfold.conf";
    EXPECT_EQ(Settings::defaultFilePath(), "/srv/config/glimmerfold/glimmerfold.conf");
    qputenv("XDG_CONFIG_HOME", "relative/config");
    EXPECT_EQ(Settings::defaultFilePath(), fallback);
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(Settings::defaultFilePath(), fallback);
}

}  // namespace
}  // namespace gf::test
