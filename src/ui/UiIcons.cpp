#include "ui/UiIcons.h"

#include <QGuiApplication>

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

QPixmap uiPixmap(const QString& name, int size) {
    const qreal ratio = qGuiApp != nullptr ? qGuiApp->devicePixelRatio() : 1.0;
    return uiIcon(name).pixmap(QSize(size, size), ratio);
}

}  // namespace gf
