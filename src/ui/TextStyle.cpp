#include "ui/TextStyle.h"

#include <QApplication>
#include <QPalette>

namespace gf {

namespace {

double scaleOf(TextStyle style) {
    switch (style) {
        case TextStyle::largeTitle:
            return 2.0;
        case TextStyle::title:
            return 1.7;
        case TextStyle::title2:
            return 1.4;
        case TextStyle::title3:
            return 1.2;
        case TextStyle::headline:
        case TextStyle::body:
            return 1.0;
        case TextStyle::subheadline:
            return 0.95;
        case TextStyle::caption:
            return 0.85;
    }
    return 1.0;
}

// Halfway between the text and the background, readable in light and dark palettes alike.
QColor secondaryColor(const QPalette& palette) {
    const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    const QColor window = palette.color(QPalette::Active, QPalette::Window);
    return QColor((text.red() * 3 + window.red() * 2) / 5,
                  (text.green() * 3 + window.green() * 2) / 5,
                  (text.blue() * 3 + window.blue() * 2) / 5);
}

}  // namespace

QFont fontFor(TextStyle style) {
    QFont font = QApplication::font();
    const double base = font.pointSizeF() > 0 ? font.pointSizeF() : 10.0;
    font.setPointSizeF(base * scaleOf(style));
    if (style == TextStyle::headline) {
        font.setBold(true);
    }
    return font;
}

void applyTextStyle(QLabel& label, TextStyle style, bool bold) {
    QFont font = fontFor(style);
    if (bold) {
        font.setBold(true);
    }
    label.setFont(font);
}

void applySecondaryStyle(QLabel& label) {
    QPalette palette = label.palette();
    const QColor color = secondaryColor(palette);
    palette.setColor(QPalette::Active, QPalette::WindowText, color);
    palette.setColor(QPalette::Inactive, QPalette::WindowText, color);
    label.setPalette(palette);
}

}  // namespace gf
