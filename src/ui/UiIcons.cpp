#include "ui/UiIcons.h"

#include <QGuiApplication>
#include <QPainter>

// Resources compiled into a static library are only registered when something references them.
static void registerUiResources() {
    Q_INIT_RESOURCE(glimmerfold_ui);
}

namespace gf {

QIcon uiIcon(const QString& name) {
    static const bool registered = (registerUiResources(), true);
    (void)registered;
    return QIcon(QStringLiteral(":/glimmerfold/ui/icons/%1.svg").arg(name));
}

QIcon uiListIcon(const QString& name, const QColor& selectedColor, int size) {
    const QIcon drawing = uiIcon(name);
    QIcon icon;
    for (const int scale : {1, 2}) {
        QPixmap normal = drawing.pixmap(QSize(size, size) * scale);
        QPixmap selected = normal;
        QPainter painter(&selected);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(selected.rect(), selectedColor);
        painter.end();
        icon.addPixmap(normal, QIcon::Normal);
        icon.addPixmap(selected, QIcon::Selected);
    }
    return icon;
}

QPixmap uiPixmap(const QString& name, int size) {
    const qreal ratio = qGuiApp != nullptr ? qGuiApp->devicePixelRatio() : 1.0;
    return uiIcon(name).pixmap(QSize(size, size), ratio);
}

}  // namespace gf
