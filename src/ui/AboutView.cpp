#include "ui/AboutView.h"

#include <QFile>
#include <QGuiApplication>
#include <QVBoxLayout>

#include "app/BuildInfo.h"
#include "ui/TextStyle.h"
#include "ui/UiIcons.h"

namespace gf {

AboutView::AboutView(QWidget* parent)
    : QWidget(parent),
      icon_(std::make_unique<QLabel>()),
      name_(std::make_unique<QLabel>(QStringLiteral("Glimmerfold"))),
      version_(std::make_unique<QLabel>(versionText())),
      description_(
          std::make_unique<QLabel>(QStringLiteral("Move and resize windows with modifier keys."))) {
    icon_->setPixmap(applicationIcon().pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
    icon_->setFixedSize(iconSize, iconSize);
    icon_->setAlignment(Qt::AlignCenter);
    applyTextStyle(*name_, TextStyle::largeTitle, true);
    applyTextStyle(*version_, TextStyle::subheadline);
    applySecondaryStyle(*version_);
    applyTextStyle(*description_, TextStyle::body);
    applySecondaryStyle(*description_);

    auto layout = std::make_unique<QVBoxLayout>();
    layout->setContentsMargins(40, 40, 40, 40);
    layout->setSpacing(16);
    layout->addStretch(1);
    for (QLabel* label : {icon_.get(), name_.get(), version_.get(), description_.get()}) {
        layout->addWidget(label, 0, Qt::AlignHCenter);
    }
    layout->addStretch(1);
    setLayout(layout.release());
}

AboutView::~AboutView() = default;

QString AboutView::versionText() {
    return QStringLiteral("Version %1 (%2)").arg(shortVersion(), buildNumber());
}

QIcon AboutView::applicationIcon() {
    const QIcon own = QGuiApplication::windowIcon();
    if (!own.isNull()) {
        return own;
    }
    const QString shipped = QStringLiteral(":/glimmerfold/icons/glimmerfold.svg");
    if (QFile::exists(shipped)) {
        return QIcon(shipped);
    }
    return QIcon::fromTheme(QStringLiteral("glimmerfold"), uiIcon(QStringLiteral("welcome")));
}

}  // namespace gf
