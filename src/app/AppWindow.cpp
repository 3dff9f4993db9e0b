#include "app/AppWindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>

namespace gf {

namespace {

constexpr Qt::WindowFlags decoratedWindow = Qt::Window | Qt::CustomizeWindowHint |
                                            Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                                            Qt::WindowMinimizeButtonHint;

}  // namespace

AppWindow::AppWindow(const Style& style, std::unique_ptr<QWidget> content)
    : QWidget(nullptr, decoratedWindow),
      layout_(std::make_unique<QVBoxLayout>()),
      content_(std::move(content)) {
    setWindowTitle(style.title);
    setFixedSize(style.size);
    layout_->setContentsMargins(0, 0, 0, 0);
    if (content_) {
        layout_->addWidget(content_.get());
    }
    setLayout(layout_.get());
}

AppWindow::~AppWindow() = default;

void AppWindow::centerOnScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) {
        return;
    }
    QRect frame(QPoint(), size());
    frame.moveCenter(screen->availableGeometry().center());
    move(frame.topLeft());
}

void AppWindow::present() {
    if (isMinimized()) {
        showNormal();
    } else {
        show();
    }
    raise();
    activateWindow();
}

void AppWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    emit closed();
}

}  // namespace gf
