#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace gf {

// Glimmerfold's own drawings, shipped in the library's resources (resources/icons/<name>.svg):
// the four Settings tabs, the wizard's page images, the grant states and the list buttons.
QIcon uiIcon(const QString& name);

// The drawing for a list row: in its own colours normally, and in `selectedColor` on the
// selection's background, where a coloured drawing could vanish.
QIcon uiListIcon(const QString& name, const QColor& selectedColor, int size);

// The drawing rendered square at `size` device-independent pixels, sharp on high-density screens.
QPixmap uiPixmap(const QString& name, int size);

}  // namespace gf
