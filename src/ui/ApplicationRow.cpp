#include "ui/ApplicationRow.h"

#include <QHBoxLayout>

#include "ui/TextStyle.h"

namespace gf {

ApplicationRow::ApplicationRow(const QPixmap& icon, const QString& name, const QString& identifier,
                               QWidget* parent)
    : QWidget(parent),
      name_(std::make_unique<QLabel>(name)),
      identifier_(std::make_unique<QLabel>(identifier)) {
    // The row is a label for whatever holds it (a list row, a button): clicks go through.
    setAttribute(Qt::WA_TransparentForMouseEvents);
    auto layout = std::make_unique<QHBoxLayout>();
    layout->setContentsMargins(6, 3, 6, 3);
    if (!icon.isNull()) {
        icon_ = std::make_unique<QLabel>();
        icon_->setFixedSize(iconSize, iconSize);
        icon_->setAlignment(Qt::AlignCenter);
        icon_->setPixmap(icon);
        layout->addWidget(icon_.get(), 0, Qt::AlignVCenter);
    }
    layout->addWidget(name_.get(), 0, Qt::AlignVCenter);
    layout->addStretch(1);
    applyTextStyle(*identifier_, TextStyle::caption);
    applySecondaryStyle(*identifier_);
    layout->addWidget(identifier_.get(), 0, Qt::AlignVCenter);
    setLayout(layout.release());
}

ApplicationRow::~ApplicationRow() = default;

}  // namespace gf
