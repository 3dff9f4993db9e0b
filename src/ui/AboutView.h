#pragma once

#include <QIcon>
#include <QLabel>
#include <QString>
#include <QWidget>
#include <memory>

namespace gf {

// The About tab: the application's icon, name, version and what it does. No controls, no state.
class AboutView : public QWidget {
    Q_OBJECT

  public:
    static constexpr int iconSize = 96;

    explicit AboutView(QWidget* parent = nullptr);
    ~AboutView() override;

    // "Version 0.1.0 (1)", from the build's version and build number.
    static QString versionText();
    // The icon the application shows for itself; Glimmerfold's themed icon when it set none.
    static QIcon applicationIcon();

    QLabel& iconLabel() { return *icon_; }
    QLabel& nameLabel() { return *name_; }
    QLabel& versionLabel() { return *version_; }
    QLabel& descriptionLabel() { return *description_; }

  private:
    std::unique_ptr<QLabel> icon_;
    std::unique_ptr<QLabel> name_;
    std::unique_ptr<QLabel> version_;
    std::unique_ptr<QLabel> description_;
};

}  // namespace gf
