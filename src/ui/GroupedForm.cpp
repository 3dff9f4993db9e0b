#include "ui/GroupedForm.h"

namespace gf {

GroupedForm::GroupedForm(QWidget* parent) : QScrollArea(parent) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    auto content = std::make_unique<QWidget>();
    auto sections = std::make_unique<QVBoxLayout>();
    sections->setContentsMargins(12, 12, 12, 12);
    sections->setSpacing(14);
    sections->addStretch(1);
    sections_ = sections.get();
    content->setLayout(sections.release());
    setWidget(content.release());
}

FormSection* GroupedForm::addSection(std::unique_ptr<FormSection> section) {
    FormSection* raw = section.get();
    // Sections go above the trailing stretch, which keeps them packed at the top.
    sections_->insertWidget(sections_->count() - 1, section.release());
    return raw;
}

}  // namespace gf
