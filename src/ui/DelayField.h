#pragma once

#include <QLineEdit>
#include <QLocale>
#include <QString>

#include "model/Settings.h"

namespace gf {

// The auto-raise delay as text: two fraction digits in the user's locale (0.25, or 0,25 where the
// decimal separator is a comma). What the user types is committed when editing finishes, as
// parsed and without clamping; text that does not parse leaves the delay alone and the field
// shows the stored value again.
class DelayField : public QLineEdit {
    Q_OBJECT

  public:
    static constexpr int width = 50;

    explicit DelayField(Settings& settings, QWidget* parent = nullptr);

    static QString format(double seconds, const QLocale& locale);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void commit();
    void showDelay(double seconds);

    Settings& settings_;
};

}  // namespace gf
