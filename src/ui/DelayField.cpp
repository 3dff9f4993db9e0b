#include "ui/DelayField.h"

#include <QEvent>

namespace gf {

DelayField::DelayField(Settings& settings, QWidget* parent)
    : QLineEdit(parent), settings_(settings) {
    setFixedWidth(width);
    setAccessibleName(QStringLiteral("Delay"));
    showDelay(settings_.autoRaiseDelay());
    connect(this, &QLineEdit::editingFinished, this, &DelayField::commit);
    connect(&settings_, &Settings::autoRaiseDelayChanged, this, &DelayField::showDelay);
}

QString DelayField::format(double seconds, const QLocale& locale) {
    return locale.toString(seconds, 'f', 2);
}

// The field follows the user's locale: a change of the application's locale reformats it.
void DelayField::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::LocaleChange) {
        showDelay(settings_.autoRaiseDelay());
    }
}

void DelayField::commit() {
    bool parsed = false;
    const double seconds = locale().toDouble(text().trimmed(), &parsed);
    if (parsed) {
        settings_.setAutoRaiseDelay(seconds);
    }
    // Also after a value Settings already held, which sends no change: the text is tidied to
    // the two-digit form either way.
    showDelay(settings_.autoRaiseDelay());
}

void DelayField::showDelay(double seconds) {
    setText(format(seconds, locale()));
}

}  // namespace gf
