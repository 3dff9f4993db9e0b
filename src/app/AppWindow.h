#pragma once

#include <QSize>
#include <QString>
#include <QVBoxLayout>
#include <QWidget>
#include <memory>

namespace gf {

// A top-level window of fixed size hosting one view: the Settings window and
// the setup wizard. A window without a close button also refuses the window
// manager's close request (Alt+F4), so the wizard can only end by finishing.
class AppWindow : public QWidget {
    Q_OBJECT

  public:
    struct Style {
        QString title;
        QSize size;
        bool closable = true;
    };

    AppWindow(const Style& style, std::unique_ptr<QWidget> content);
    ~AppWindow() override;

    bool isClosable() const { return closable_; }
    QWidget* content() const { return content_.get(); }

    // Places the window in the middle of the screen's free area.
    void centerOnScreen();
    // Shows the window, brings it to the front and gives it the keyboard.
    void present();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    bool closable_;
    std::unique_ptr<QVBoxLayout> layout_;
    std::unique_ptr<QWidget> content_;  // declared last: goes before the layout
};

}  // namespace gf
