#include "ui/PermissionRow.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/TextStyle.h"
#include "ui/UiIcons.h"

namespace gf {

namespace {

constexpr int statusSize = 22;

}  // namespace

PermissionRow::PermissionRow(const QString& title, const QString& detail, QWidget* parent)
    : QFrame(parent),
      status_(std::make_unique<QLabel>()),
      title_(std::make_unique<QLabel>(title)),
      detail_(std::make_unique<QLabel>(detail)),
      grant_(std::make_unique<QPushButton>(QStringLiteral("Grant Access"))) {
    // The faintest fill on a rounded rectangle sets each grant apart without a border.
    setObjectName(QStringLiteral("permissionRow"));
    setStyleSheet(QStringLiteral(
        "QFrame#permissionRow { background-color: rgba(128, 128, 128, 28); border-radius: 8px; }"));
    status_->setFixedSize(statusSize, statusSize);
    applyTextStyle(*title_, TextStyle::headline);
    applyTextStyle(*detail_, TextStyle::caption);
    applySecondaryStyle(*detail_);
    grant_->setAutoDefault(false);
    grant_->setAccessibleName(QStringLiteral("Grant Access: %1").arg(title));

    auto texts = std::make_unique<QVBoxLayout>();
    texts->setSpacing(2);
    texts->addWidget(title_.get());
    texts->addWidget(detail_.get());

    auto layout = std::make_unique<QHBoxLayout>();
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(12);
    layout->addWidget(status_.get(), 0, Qt::AlignVCenter);
    layout->addLayout(texts.release());
    layout->addStretch(1);
    layout->addWidget(grant_.get(), 0, Qt::AlignVCenter);
    setLayout(layout.release());

    setGranted(false);
}

PermissionRow::~PermissionRow() = default;

void PermissionRow::setGranted(bool granted) {
    granted_ = granted;
    status_->setPixmap(
        uiPixmap(granted ? QStringLiteral("granted") : QStringLiteral("not-granted"), statusSize));
    grant_->setEnabled(!granted);
}

}  // namespace gf
