#include "ui/ApplicationIconImage.h"

#include <QFileInfo>
#include <QIcon>
#include <QImage>

namespace gf {

namespace {

QIcon namedIcon(const std::string& themeName) {
    if (themeName.empty()) {
        return {};
    }
    const QString name = QString::fromStdString(themeName);
    if (QFileInfo(name).isAbsolute()) {
        return QFileInfo::exists(name) ? QIcon(name) : QIcon();
    }
    return QIcon::fromTheme(name);
}

QImage imageOfPixels(const ApplicationIcon& icon) {
    const auto pixelCount =
        static_cast<std::size_t>(icon.width) * static_cast<std::size_t>(icon.height);
    if (icon.width <= 0 || icon.height <= 0 || icon.argb.size() < pixelCount) {
        return {};
    }
    QImage image(icon.width, icon.height, QImage::Format_ARGB32);
    for (int y = 0; y < icon.height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < icon.width; ++x) {
            line[x] = icon.argb[static_cast<std::size_t>(y) * static_cast<std::size_t>(icon.width) +
                                static_cast<std::size_t>(x)];
        }
    }
    return image;
}

}  // namespace

QPixmap pixmapOf(const ApplicationIcon& icon, int size, qreal devicePixelRatio) {
    const QIcon named = namedIcon(icon.themeName);
    if (!named.isNull()) {
        QPixmap rendered = named.pixmap(QSize(size, size), devicePixelRatio);
        if (!rendered.isNull()) {
            return rendered;
        }
    }
    const QImage image = imageOfPixels(icon);
    if (image.isNull()) {
        return {};
    }
    const int device = static_cast<int>(size * devicePixelRatio);
    QPixmap pixmap = QPixmap::fromImage(
        image.scaled(device, device, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

}  // namespace gf
