#pragma once

#include <QString>

namespace gf {

// Adds or removes the XDG autostart entry that starts Glimmerfold at login.
// A failure is printed on standard output; nothing else is told.
void setLaunchAtLogin(bool enabled);

// $XDG_CONFIG_HOME/autostart/glimmerfold.desktop (~/.config when unset).
QString autostartEntryPath();

}  // namespace gf
