#include "model/Settings.h"

#include <QDir>
#include <QStringList>
#include <QVariant>
#include <algorithm>

#include "model/IgnoreListCoding.h"
#include "model/SettingsFile.h"

namespace gf {

namespace {

// The file's keys are the preferences' names.
namespace key {
const QString isEnabled = QStringLiteral("isEnabled");
const QString moveModifiers = QStringLiteral("moveModifiers");
const QString resizeModifiers = QStringLiteral("resizeModifiers");
const QString bringToFrontOnManipulate = QStringLiteral("bringToFrontOnManipulate");
const QString resizeFromBottomRightOnly = QStringLiteral("resizeFromBottomRightOnly");
const QString autoRaiseEnabled = QStringLiteral("autoRaiseEnabled");
const QString autoRaiseDelay = QStringLiteral("autoRaiseDelay");
const QString autoRaiseAllWindows = QStringLiteral("autoRaiseAllWindows");
const QString autoRaiseModifiers = QStringLiteral("autoRaiseModifiers");
const QString magneticsEnabled = QStringLiteral("magneticsEnabled");
const QString snapToScreenEdges = QStringLiteral("snapToScreenEdges");
const QString snapToWindowEdges = QStringLiteral("snapToWindowEdges");
const QString snapToDockAndMenuBar = QStringLiteral("snapToDockAndMenuBar");
const QString snapThreshold = QStringLiteral("snapThreshold");
const QString hasCompletedSetup = QStringLiteral("hasCompletedSetup");
const QString startAtLogin = QStringLiteral("startAtLogin");
const QString showInDock = QStringLiteral("showInDock");
const QString showMenuBarIcon = QStringLiteral("showMenuBarIcon");
const QString ignoreList = QStringLiteral("ignoreList");
}  // namespace key

// Each load helper leaves `field` at its default unless the file holds a readable value, and adds
// `key` to `unreadable` when the file holds a value that cannot be read.
void load(const SettingsFile& file, const QString& key, bool& field, QStringList& unreadable) {
    if (const auto value = file.readBool(key)) {
        field = *value;
    } else if (file.contains(key)) {
        unreadable << key;
    }
}

void load(const SettingsFile& file, const QString& key, double& field, QStringList& unreadable) {
    if (const auto value = file.readDouble(key)) {
        field = *value;
    } else if (file.contains(key)) {
        unreadable << key;
    }
}

void load(const SettingsFile& file, const QString& key, ModifierKeySet& field,
          QStringList& unreadable) {
    const auto data = file.readData(key);
    const auto set = data ? ModifierKeySet::fromJson(*data) : std::nullopt;
    if (set) {
        field = *set;
    } else if (file.contains(key)) {
        unreadable << key;
    }
}

void load(const SettingsFile& file, const QString& key, std::vector<IgnoreListEntry>& field,
          QStringList& unreadable) {
    const auto data = file.readData(key);
    auto entries = data ? IgnoreListCoding::decode(*data) : std::nullopt;
    if (entries) {
        field = std::move(*entries);
    } else if (file.contains(key)) {
        unreadable << key;
    }
}

QVariant storedForm(bool value) {
    return QVariant(value);
}

QVariant storedForm(double value) {
    return QVariant(value);
}

QVariant storedForm(const ModifierKeySet& value) {
    return QVariant(value.toJson());
}

QVariant storedForm(const std::vector<IgnoreListEntry>& value) {
    return QVariant(IgnoreListCoding::encode(value));
}

}  // namespace

Settings& Settings::shared() {
    // A function-local static is constructed exactly once, even under concurrent first calls.
    static Settings instance(defaultFilePath());
    return instance;
}

QString Settings::defaultFilePath() {
    QString configHome = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (configHome.isEmpty() || QDir::isRelativePath(configHome)) {
        configHome = QDir::homePath() + QStringLiteral("/.config");
    }
    return configHome + QStringLiteral("/glimmerfold/glimmerfold.conf");
}

Settings::Settings(const QString& filePath, QObject* parent)
    : QObject(parent), file_(std::make_unique<SettingsFile>(filePath)) {
    load();
}

Settings::~Settings() = default;

void Settings::load() {
    const SettingsFile& file = *file_;
    QStringList unreadable;
    gf::load(file, key::isEnabled, isEnabled_, unreadable);
    gf::load(file, key::moveModifiers, moveModifiers_, unreadable);
    gf::load(file, key::resizeModifiers, resizeModifiers_, unreadable);
    gf::load(file, key::bringToFrontOnManipulate, bringToFrontOnManipulate_, unreadable);
    gf::load(file, key::resizeFromBottomRightOnly, resizeFromBottomRightOnly_, unreadable);
    gf::load(file, key::autoRaiseEnabled, autoRaiseEnabled_, unreadable);
    gf::load(file, key::autoRaiseDelay, autoRaiseDelay_, unreadable);
    gf::load(file, key::autoRaiseAllWindows, autoRaiseAllWindows_, unreadable);
    gf::load(file, key::autoRaiseModifiers, autoRaiseModifiers_, unreadable);
    gf::load(file, key::magneticsEnabled, magneticsEnabled_, unreadable);
    gf::load(file, key::snapToScreenEdges, snapToScreenEdges_, unreadable);
    gf::load(file, key::snapToWindowEdges, snapToWindowEdges_, unreadable);
    gf::load(file, key::snapToDockAndMenuBar, snapToDockAndMenuBar_, unreadable);
    gf::load(file, key::snapThreshold, snapThreshold_, unreadable);
    gf::load(file, key::hasCompletedSetup, hasCompletedSetup_, unreadable);
    gf::load(file, key::startAtLogin, startAtLogin_, unreadable);
    gf::load(file, key::showInDock, showInDock_, unreadable);
    gf::load(file, key::showMenuBarIcon, showMenuBarIcon_, unreadable);
    gf::load(file, key::ignoreList, ignoreList_, unreadable);
    file.reportReadProblems(unreadable);
}

QString Settings::filePath() const {
    return file_->path();
}

bool Settings::isIgnored(std::string_view bundleIdentifier) const {
    return std::any_of(ignoreList_.begin(), ignoreList_.end(), [&](const IgnoreListEntry& entry) {
        return entry.bundleIdentifier == bundleIdentifier;
    });
}

// Every assignment reaches the file, also one that repeats the current value; only a real change
// reaches observers, and only once the new value is stored and written. `==` makes a NaN double
// count as changed every time.
template <typename T, typename Signal>
void Settings::assign(T& field, const T& value, const QString& key, Signal changed) {
    const bool isChange = !(field == value);
    field = value;
    file_->write(key, storedForm(field));
    if (isChange) {
        emit(this->*changed)(field);
    }
}

void Settings::setIsEnabled(bool value) {
    assign(isEnabled_, value, key::isEnabled, &Settings::isEnabledChanged);
}

void Settings::setMoveModifiers(const ModifierKeySet& value) {
    assign(moveModifiers_, value, key::moveModifiers, &Settings::moveModifiersChanged);
}

void Settings::setResizeModifiers(const ModifierKeySet& value) {
    assign(resizeModifiers_, value, key::resizeModifiers, &Settings::resizeModifiersChanged);
}

void Settings::setBringToFrontOnManipulate(bool value) {
    assign(bringToFrontOnManipulate_, value, key::bringToFrontOnManipulate,
           &Settings::bringToFrontOnManipulateChanged);
}

void Settings::setResizeFromBottomRightOnly(bool value) {
    assign(resizeFromBottomRightOnly_, value, key::resizeFromBottomRightOnly,
           &Settings::resizeFromBottomRightOnlyChanged);
}

void Settings::setAutoRaiseEnabled(bool value) {
    assign(autoRaiseEnabled_, value, key::autoRaiseEnabled, &Settings::autoRaiseEnabledChanged);
}

void Settings::setAutoRaiseDelay(double value) {
    assign(autoRaiseDelay_, value, key::autoRaiseDelay, &Settings::autoRaiseDelayChanged);
}

void Settings::setAutoRaiseAllWindows(bool value) {
    assign(autoRaiseAllWindows_, value, key::autoRaiseAllWindows,
           &Settings::autoRaiseAllWindowsChanged);
}

void Settings::setAutoRaiseModifiers(const ModifierKeySet& value) {
    assign(autoRaiseModifiers_, value, key::autoRaiseModifiers,
           &Settings::autoRaiseModifiersChanged);
}

void Settings::setMagneticsEnabled(bool value) {
    assign(magneticsEnabled_, value, key::magneticsEnabled, &Settings::magneticsEnabledChanged);
}

void Settings::setSnapToScreenEdges(bool value) {
    assign(snapToScreenEdges_, value, key::snapToScreenEdges, &Settings::snapToScreenEdgesChanged);
}

void Settings::setSnapToWindowEdges(bool value) {
    assign(snapToWindowEdges_, value, key::snapToWindowEdges, &Settings::snapToWindowEdgesChanged);
}

void Settings::setSnapToDockAndMenuBar(bool value) {
    assign(snapToDockAndMenuBar_, value, key::snapToDockAndMenuBar,
           &Settings::snapToDockAndMenuBarChanged);
}

void Settings::setSnapThreshold(double value) {
    assign(snapThreshold_, value, key::snapThreshold, &Settings::snapThresholdChanged);
}

void Settings::setHasCompletedSetup(bool value) {
    assign(hasCompletedSetup_, value, key::hasCompletedSetup, &Settings::hasCompletedSetupChanged);
}

void Settings::setStartAtLogin(bool value) {
    assign(startAtLogin_, value, key::startAtLogin, &Settings::startAtLoginChanged);
}

void Settings::setShowInDock(bool value) {
    assign(showInDock_, value, key::showInDock, &Settings::showInDockChanged);
}

void Settings::setShowMenuBarIcon(bool value) {
    assign(showMenuBarIcon_, value, key::showMenuBarIcon, &Settings::showMenuBarIconChanged);
}

void Settings::setIgnoreList(const std::vector<IgnoreListEntry>& value) {
    assign(ignoreList_, value, key::ignoreList, &Settings::ignoreListChanged);
}

}  // namespace gf
