#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QString>
#include <QVBoxLayout>
#include <memory>

namespace gf {

// One titled section of a grouped form: rows stacked top to bottom inside a framed box.
class FormSection : public QGroupBox {
    Q_OBJECT

  public:
    explicit FormSection(const QString& title, QWidget* parent = nullptr);

    // The section takes the row over (Qt parenting) and returns it for wiring.
    template <typename W>
    W* addRow(std::unique_ptr<W> row) {
        W* raw = row.get();
        rows_->addWidget(row.release());
        return raw;
    }

    // A row whose caption stands on a line of its own with the control below it, so that a wide
    // control (a key picker) lines up with the rows above instead of overflowing the column.
    template <typename W>
    W* addLabelledRow(const QString& caption, std::unique_ptr<W> control) {
        W* raw = control.get();
        addCaptionedRow(caption, std::unique_ptr<QWidget>(control.release()));
        return raw;
    }

  private:
    void addCaptionedRow(const QString& caption, std::unique_ptr<QWidget> control);

    QVBoxLayout* rows_;  // owned by the box through setLayout
};

}  // namespace gf
