#pragma once

#include <QPixmap>

#include "platform/ApplicationIcon.h"

namespace gf {

// An application's icon at `size` x `size`, scaled to fit: a theme icon or image file when the
// icon names one that can be found, otherwise the pixels the application published. Null when
// neither gives an image.
QPixmap pixmapOf(const ApplicationIcon& icon, int size, qreal devicePixelRatio = 1.0);

}  // namespace gf
