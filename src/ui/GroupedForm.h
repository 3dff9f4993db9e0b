#pragma once

#include <QScrollArea>
#include <QVBoxLayout>
#include <memory>

#include "ui/FormSection.h"

namespace gf {

// A form of titled sections, top to bottom, that scrolls when it is taller than its column.
class GroupedForm : public QScrollArea {
    Q_OBJECT

  public:
    explicit GroupedForm(QWidget* parent = nullptr);

    // The form takes the section over (Qt parenting) and returns it for adding rows.
    FormSection* addSection(std::unique_ptr<FormSection> section);

  private:
    QVBoxLayout* sections_;  // owned by the scrolled content widget
};

}  // namespace gf
