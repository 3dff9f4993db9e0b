#pragma once

#include <QFont>
#include <QLabel>

namespace gf {

// The named text styles the views use, scaled from the application's font so that they follow
// the desktop's font size.
enum class TextStyle { largeTitle, title, title2, title3, headline, body, subheadline, caption };

QFont fontFor(TextStyle style);

// Sets the label's font to the style and, optionally, bold.
void applyTextStyle(QLabel& label, TextStyle style, bool bold = false);

// Draws the label in the dimmer colour used for explanations and details.
void applySecondaryStyle(QLabel& label);

}  // namespace gf
