#pragma once

#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QVBoxLayout>
#include <QWidget>
#include <memory>
#include <vector>

#include "ui/TextStyle.h"

namespace gf {

// The pattern every setup-wizard page follows, top to bottom and centred: space, a large image,
// the title, explanations in the dimmer style, the page's own content, space, the page's one
// prominent button, and a 24-point margin below it.
class WizardPage : public QWidget {
    Q_OBJECT

  public:
    static constexpr int textWidth = 360;
    static constexpr int spacing = 16;

    WizardPage(const QString& buttonText, QWidget* parent = nullptr);
    ~WizardPage() override;

    void setImage(const QString& iconName, int size);
    void setTitle(const QString& text, TextStyle style);
    // A line in the dimmer style; `limitWidth` wraps it, centred, at 360 points.
    QLabel& addExplanation(const QString& text, TextStyle style, bool limitWidth);
    void clearExplanations();
    // The page's own content, between the explanations and the button; the page takes it over.
    void setContent(std::unique_ptr<QWidget> content);

    QLabel& imageLabel() { return *image_; }
    QString imageName() const { return imageName_; }
    QLabel& titleLabel() { return *title_; }
    const std::vector<std::unique_ptr<QLabel>>& explanations() const { return explanations_; }
    QPushButton& button() { return *button_; }

  private:
    QString imageName_;
    std::unique_ptr<QLabel> image_;
    std::unique_ptr<QLabel> title_;
    std::vector<std::unique_ptr<QLabel>> explanations_;
    std::unique_ptr<QWidget> content_;
    std::unique_ptr<QPushButton> button_;
    QVBoxLayout* explanationColumn_ = nullptr;  // owned by the page's layout
    QVBoxLayout* contentColumn_ = nullptr;      // owned by the page's layout
};

}  // namespace gf
