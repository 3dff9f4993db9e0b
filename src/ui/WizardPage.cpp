#include "ui/WizardPage.h"

#include "ui/UiIcons.h"

namespace gf {

namespace {

// Filled with the accent colour, larger than an ordinary button: the one way forward.
constexpr auto prominentButtonStyle =
    "QPushButton { background-color: palette(highlight); color: palette(highlighted-text);"
    " border: none; border-radius: 6px; padding: 7px 22px; }"
    "QPushButton:pressed { background-color: palette(dark); }"
    "QPushButton:disabled { background-color: palette(midlight); color: palette(mid); }";

}  // namespace

WizardPage::WizardPage(const QString& buttonText, QWidget* parent)
    : QWidget(parent),
      image_(std::make_unique<QLabel>()),
      title_(std::make_unique<QLabel>()),
      button_(std::make_unique<QPushButton>(buttonText)) {
    image_->setAlignment(Qt::AlignCenter);
    title_->setAlignment(Qt::AlignCenter);
    button_->setStyleSheet(QString::fromLatin1(prominentButtonStyle));
    QFont buttonFont = fontFor(TextStyle::body);
    buttonFont.setPointSizeF(buttonFont.pointSizeF() * 1.1);
    button_->setFont(buttonFont);
    button_->setDefault(true);

    auto layout = std::make_unique<QVBoxLayout>();
    layout->setSpacing(spacing);
    layout->addStretch(1);
    layout->addWidget(image_.get(), 0, Qt::AlignHCenter);
    layout->addWidget(title_.get(), 0, Qt::AlignHCenter);
    auto explanations = std::make_unique<QVBoxLayout>();
    explanations->setSpacing(spacing);
    explanationColumn_ = explanations.get();
    layout->addLayout(explanations.release());
    auto content = std::make_unique<QVBoxLayout>();
    content->setContentsMargins(0, 0, 0, 0);
    contentColumn_ = content.get();
    layout->addLayout(content.release());
    layout->addStretch(1);
    layout->addWidget(button_.get(), 0, Qt::AlignHCenter);
    layout->addSpacing(24 - spacing);
    setLayout(layout.release());
}

WizardPage::~WizardPage() = default;

void WizardPage::setImage(const QString& iconName, int size) {
    imageName_ = iconName;
    image_->setPixmap(uiPixmap(iconName, size));
    image_->setFixedSize(size, size);
}

void WizardPage::setTitle(const QString& text, TextStyle style) {
    title_->setText(text);
    applyTextStyle(*title_, style, true);
}

QLabel& WizardPage::addExplanation(const QString& text, TextStyle style, bool limitWidth) {
    auto label = std::make_unique<QLabel>(text);
    applyTextStyle(*label, style);
    applySecondaryStyle(*label);
    label->setAlignment(Qt::AlignCenter);
    if (limitWidth) {
        label->setWordWrap(true);
        label->setFixedWidth(textWidth);
        // The page's fixed size leaves the layout no room to ask for the wrapped height itself.
        label->setMinimumHeight(label->heightForWidth(textWidth));
    }
    explanationColumn_->addWidget(label.get(), 0, Qt::AlignHCenter);
    explanations_.push_back(std::move(label));
    return *explanations_.back();
}

void WizardPage::clearExplanations() {
    explanations_.clear();
}

void WizardPage::setContent(std::unique_ptr<QWidget> content) {
    content_ = std::move(content);
    if (content_ != nullptr) {
        contentColumn_->addWidget(content_.get());
    }
}

}  // namespace gf
