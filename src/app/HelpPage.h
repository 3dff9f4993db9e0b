#pragma once

#include <QString>
#include <QUrl>

namespace gf {

// The short page that explains why Glimmerfold needs an X11 session and how
// to get one. Installed with the program; a copy is kept in the program's
// resources for runs from the build tree.
QUrl helpPageUrl();

// Opens the help page in the desktop's browser. False when it could not be
// found or opened.
bool openHelpPage();

}  // namespace gf
