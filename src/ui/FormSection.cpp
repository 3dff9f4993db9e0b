#include "ui/FormSection.h"

namespace gf {

FormSection::FormSection(const QString& title, QWidget* parent) : QGroupBox(title, parent) {
    auto rows = std::make_unique<QVBoxLayout>();
    rows->setSpacing(8);
    rows_ = rows.get();
    setLayout(rows.release());
}

void FormSection::addCaptionedRow(const QString& caption, std::unique_ptr<QWidget> control) {
    auto row = std::make_unique<QWidget>();
    auto layout = std::make_unique<QVBoxLayout>();
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(std::make_unique<QLabel>(caption).release());
    layout->addWidget(control.release());
    row->setLayout(layout.release());
    rows_->addWidget(row.release());
}

}  // namespace gf
