#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

namespace gf {

// Glimmerfold's own drawings, shipped in the library's resources (resources/icons/<name>.svg):
// the four Settings tabs, the wizard's page images, the grant states and the list buttons.
QIcon uiIcon(const QString& name);

// The drawing rendered square at `size` device-independent pixels, sharp on high-density screens.
QPixmap uiPixmap(const QString& name, int size);

}  // namespace gf
