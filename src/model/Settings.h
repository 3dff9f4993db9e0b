#pragma once

#include <QObject>
#include <QString>
#include <memory>
#include <string_view>
#include <vector>

#include "model/IgnoreListEntry.h"
#include "model/ModifierKeySet.h"

namespace gf {

class SettingsFile;

// Every user preference, kept in an INI file with one key per preference (the key is the
// property's name). Values are read once, at construction; a value that is missing or cannot be
// read takes that preference's default and leaves the others alone. Each assignment is written
// through before the setter returns, and the property's change signal is emitted only when the
// value really changed, after it was stored and written.
class Settings : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isEnabled READ isEnabled WRITE setIsEnabled NOTIFY isEnabledChanged)
    Q_PROPERTY(gf::ModifierKeySet moveModifiers READ moveModifiers WRITE setMoveModifiers NOTIFY
                   moveModifiersChanged)
    Q_PROPERTY(gf::ModifierKeySet resizeModifiers READ resizeModifiers WRITE setResizeModifiers
                   NOTIFY resizeModifiersChanged)
    Q_PROPERTY(bool bringToFrontOnManipulate READ bringToFrontOnManipulate WRITE
                   setBringToFrontOnManipulate NOTIFY bringToFrontOnManipulateChanged)
    Q_PROPERTY(bool resizeFromBottomRightOnly READ resizeFromBottomRightOnly WRITE
                   setResizeFromBottomRightOnly NOTIFY resizeFromBottomRightOnlyChanged)
    Q_PROPERTY(bool autoRaiseEnabled READ autoRaiseEnabled WRITE setAutoRaiseEnabled NOTIFY
                   autoRaiseEnabledChanged)
    Q_PROPERTY(double autoRaiseDelay READ autoRaiseDelay WRITE setAutoRaiseDelay NOTIFY
                   autoRaiseDelayChanged)
    Q_PROPERTY(bool autoRaiseAllWindows READ autoRaiseAllWindows WRITE setAutoRaiseAllWindows NOTIFY
                   autoRaiseAllWindowsChanged)
    Q_PROPERTY(gf::ModifierKeySet autoRaiseModifiers READ autoRaiseModifiers WRITE
                   setAutoRaiseModifiers NOTIFY autoRaiseModifiersChanged)
    Q_PROPERTY(bool magneticsEnabled READ magneticsEnabled WRITE setMagneticsEnabled NOTIFY
                   magneticsEnabledChanged)
    Q_PROPERTY(bool snapToScreenEdges READ snapToScreenEdges WRITE setSnapToScreenEdges NOTIFY
                   snapToScreenEdgesChanged)
    Q_PROPERTY(bool snapToWindowEdges READ snapToWindowEdges WRITE setSnapToWindowEdges NOTIFY
                   snapToWindowEdgesChanged)
    Q_PROPERTY(bool snapToDockAndMenuBar READ snapToDockAndMenuBar WRITE setSnapToDockAndMenuBar
                   NOTIFY snapToDockAndMenuBarChanged)
    Q_PROPERTY(
        double snapThreshold READ snapThreshold WRITE setSnapThreshold NOTIFY snapThresholdChanged)
    Q_PROPERTY(bool hasCompletedSetup READ hasCompletedSetup WRITE setHasCompletedSetup NOTIFY
                   hasCompletedSetupChanged)
    Q_PROPERTY(bool startAtLogin READ startAtLogin WRITE setStartAtLogin NOTIFY startAtLoginChanged)
    Q_PROPERTY(bool showInDock READ showInDock WRITE setShowInDock NOTIFY showInDockChanged)
    Q_PROPERTY(bool showMenuBarIcon READ showMenuBarIcon WRITE setShowMenuBarIcon NOTIFY
                   showMenuBarIconChanged)
    Q_PROPERTY(std::vector<gf::IgnoreListEntry> ignoreList READ ignoreList WRITE setIgnoreList
                   NOTIFY ignoreListChanged)

  public:
    // The process-wide instance, reading defaultFilePath(); made on first use, once, even when
    // two threads ask at the same time.
    static Settings& shared();
    // $XDG_CONFIG_HOME/glimmerfold/glimmerfold.conf, or ~/.config/glimmerfold/glimmerfold.conf
    // when the variable is unset or not an absolute path.
    static QString defaultFilePath();

    // Reads every preference from the file at `filePath`; writes nothing.
    explicit Settings(const QString& filePath, QObject* parent = nullptr);
    ~Settings() override;

    QString filePath() const;

    bool isEnabled() const { return isEnabled_; }
    ModifierKeySet moveModifiers() const { return moveModifiers_; }
    ModifierKeySet resizeModifiers() const { return resizeModifiers_; }
    bool bringToFrontOnManipulate() const { return bringToFrontOnManipulate_; }
    bool resizeFromBottomRightOnly() const { return resizeFromBottomRightOnly_; }
    bool autoRaiseEnabled() const { return autoRaiseEnabled_; }
    double autoRaiseDelay() const { return autoRaiseDelay_; }
    bool autoRaiseAllWindows() const { return autoRaiseAllWindows_; }
    ModifierKeySet autoRaiseModifiers() const { return autoRaiseModifiers_; }
    bool magneticsEnabled() const { return magneticsEnabled_; }
    bool snapToScreenEdges() const { return snapToScreenEdges_; }
    bool snapToWindowEdges() const { return snapToWindowEdges_; }
    bool snapToDockAndMenuBar() const { return snapToDockAndMenuBar_; }
    double snapThreshold() const { return snapThreshold_; }
    bool hasCompletedSetup() const { return hasCompletedSetup_; }
    bool startAtLogin() const { return startAtLogin_; }
    bool showInDock() const { return showInDock_; }
    bool showMenuBarIcon() const { return showMenuBarIcon_; }
    std::vector<IgnoreListEntry> ignoreList() const { return ignoreList_; }

    // True when some entry's bundleIdentifier equals `bundleIdentifier` exactly (case-sensitive).
    bool isIgnored(std::string_view bundleIdentifier) const;

  public slots:
    void setIsEnabled(bool value);
    void setMoveModifiers(const gf::ModifierKeySet& value);
    void setResizeModifiers(const gf::ModifierKeySet& value);
    void setBringToFrontOnManipulate(bool value);
    void setResizeFromBottomRightOnly(bool value);
    void setAutoRaiseEnabled(bool value);
    void setAutoRaiseDelay(double value);
    void setAutoRaiseAllWindows(bool value);
    void setAutoRaiseModifiers(const gf::ModifierKeySet& value);
    void setMagneticsEnabled(bool value);
    void setSnapToScreenEdges(bool value);
    void setSnapToWindowEdges(bool value);
    void setSnapToDockAndMenuBar(bool value);
    void setSnapThreshold(double value);
    void setHasCompletedSetup(bool value);
    void setStartAtLogin(bool value);
    void setShowInDock(bool value);
    void setShowMenuBarIcon(bool value);
    void setIgnoreList(const std::vector<gf::IgnoreListEntry>& value);

  signals:
    void isEnabledChanged(bool value);
    void moveModifiersChanged(const gf::ModifierKeySet& value);
    void resizeModifiersChanged(const gf::ModifierKeySet& value);
    void bringToFrontOnManipulateChanged(bool value);
    void resizeFromBottomRightOnlyChanged(bool value);
    void autoRaiseEnabledChanged(bool value);
    void autoRaiseDelayChanged(double value);
    void autoRaiseAllWindowsChanged(bool value);
    void autoRaiseModifiersChanged(const gf::ModifierKeySet& value);
    void magneticsEnabledChanged(bool value);
    void snapToScreenEdgesChanged(bool value);
    void snapToWindowEdgesChanged(bool value);
    void snapToDockAndMenuBarChanged(bool value);
    void snapThresholdChanged(double value);
    void hasCompletedSetupChanged(bool value);
    void startAtLoginChanged(bool value);
    void showInDockChanged(bool value);
    void showMenuBarIconChanged(bool value);
    void ignoreListChanged(const std::vector<gf::IgnoreListEntry>& value);

  private:
    void load();
    template <typename T, typename Signal>
    void assign(T& field, const T& value, const QString& key, Signal changed);

    std::unique_ptr<SettingsFile> file_;

    // Defaults, used whenever the file has no readable value for the preference.
    bool isEnabled_ = true;
    ModifierKeySet moveModifiers_{ModifierKey::control(), ModifierKey::command()};
    ModifierKeySet resizeModifiers_{ModifierKey::control(), ModifierKey::option()};
    bool bringToFrontOnManipulate_ = true;
    bool resizeFromBottomRightOnly_ = false;
    bool autoRaiseEnabled_ = false;
    double autoRaiseDelay_ = 0.25;
    bool autoRaiseAllWindows_ = false;
    ModifierKeySet autoRaiseModifiers_;
    bool magneticsEnabled_ = true;
    bool snapToScreenEdges_ = true;
    bool snapToWindowEdges_ = true;
    bool snapToDockAndMenuBar_ = true;
    double snapThreshold_ = 10.0;
    bool hasCompletedSetup_ = false;
    bool startAtLogin_ = false;
    bool showInDock_ = false;
    bool showMenuBarIcon_ = true;
    std::vector<IgnoreListEntry> ignoreList_;
};

}  // namespace gf
