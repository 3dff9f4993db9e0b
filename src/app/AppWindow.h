#pragma once

#include <QSize>
#include <QString>
#include <QVBoxLayout>
#include <QWidget>
#include <memory>

namespace gf {

// A top-level window of fixed size hosting one view: the Settings window and
// the setup wizard. Both can be closed like any other window; what closing
// means is up to whoever made the window.
class AppWindow : public QWidget {
    Q_OBJECT

  public:
    struct Style {
        QString title;
        QSize size;
    };

    AppWindow(const Style& style, std::unique_ptr<QWidget> content);
    ~AppWindow() override;

    QWidget* content() const { return content_.get(); }

    // Places the window in the middle of the screen's free area.
    void centerOnScreen();
    // Shows the window, brings it to the front and gives it the keyboard.
    void present();

  signals:
    // The user closed the window (its close button, the window manager's
    // close, Alt+F4); hiding it from the program does not count.
    void closed();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    std::unique_ptr<QVBoxLayout> layout_;
    std::unique_ptr<QWidget> content_;  // declared last: goes before the layout
};

}  // namespace gf
