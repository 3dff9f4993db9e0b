#pragma once

#include "model/ModifierKeySet.h"
#include "model/Settings.h"

namespace gf {

// One preference of Settings as the triple a view needs to bind a control to it: how to read it,
// how to assign it, and the signal that tells of a real change.
template <typename T, typename Arg = T>
struct SettingsProperty {
    T (Settings::*read)() const;
    void (Settings::*write)(Arg);
    void (Settings::*changed)(Arg);
};

using BoolProperty = SettingsProperty<bool>;
using DoubleProperty = SettingsProperty<double>;
using ModifierKeySetProperty = SettingsProperty<ModifierKeySet, const ModifierKeySet&>;

namespace property {

inline constexpr ModifierKeySetProperty moveModifiers{
    &Settings::moveModifiers, &Settings::setMoveModifiers, &Settings::moveModifiersChanged};
inline constexpr ModifierKeySetProperty resizeModifiers{
    &Settings::resizeModifiers, &Settings::setResizeModifiers, &Settings::resizeModifiersChanged};
inline constexpr ModifierKeySetProperty autoRaiseModifiers{&Settings::autoRaiseModifiers,
                                                           &Settings::setAutoRaiseModifiers,
                                                           &Settings::autoRaiseModifiersChanged};

inline constexpr BoolProperty bringToFrontOnManipulate{&Settings::bringToFrontOnManipulate,
                                                       &Settings::setBringToFrontOnManipulate,
                                                       &Settings::bringToFrontOnManipulateChanged};
inline constexpr BoolProperty resizeFromBottomRightOnly{
    &Settings::resizeFromBottomRightOnly, &Settings::setResizeFromBottomRightOnly,
    &Settings::resizeFromBottomRightOnlyChanged};
inline constexpr BoolProperty autoRaiseEnabled{&Settings::autoRaiseEnabled,
                                               &Settings::setAutoRaiseEnabled,
                                               &Settings::autoRaiseEnabledChanged};
inline constexpr BoolProperty autoRaiseAllWindows{&Settings::autoRaiseAllWindows,
                                                  &Settings::setAutoRaiseAllWindows,
                                                  &Settings::autoRaiseAllWindowsChanged};
inline constexpr BoolProperty startAtLogin{&Settings::startAtLogin, &Settings::setStartAtLogin,
                                           &Settings::startAtLoginChanged};
inline constexpr BoolProperty showInDock{&Settings::showInDock, &Settings::setShowInDock,
                                         &Settings::showInDockChanged};
inline constexpr BoolProperty magneticsEnabled{&Settings::magneticsEnabled,
                                               &Settings::setMagneticsEnabled,
                                               &Settings::magneticsEnabledChanged};
inline constexpr BoolProperty snapToScreenEdges{&Settings::snapToScreenEdges,
                                                &Settings::setSnapToScreenEdges,
                                                &Settings::snapToScreenEdgesChanged};
inline constexpr BoolProperty snapToWindowEdges{&Settings::snapToWindowEdges,
                                                &Settings::setSnapToWindowEdges,
                                                &Settings::snapToWindowEdgesChanged};
inline constexpr BoolProperty snapToDockAndMenuBar{&Settings::snapToDockAndMenuBar,
                                                   &Settings::setSnapToDockAndMenuBar,
                                                   &Settings::snapToDockAndMenuBarChanged};

}  // namespace property

}  // namespace gf
