#pragma once

#include <QLabel>
#include <QPixmap>
#include <QString>
#include <QWidget>
#include <memory>

namespace gf {

// One application in a list: its 20-point icon (left out when there is none, with no
// placeholder), its name, and its identifier in small dim type at the trailing edge.
class ApplicationRow : public QWidget {
    Q_OBJECT

  public:
    static constexpr int iconSize = 20;

    ApplicationRow(const QPixmap& icon, const QString& name, const QString& identifier,
                   QWidget* parent = nullptr);
    ~ApplicationRow() override;

    QLabel* iconLabel() const { return icon_.get(); }  // nullptr without an icon
    QLabel& nameLabel() { return *name_; }
    QLabel& identifierLabel() { return *identifier_; }

  private:
    std::unique_ptr<QLabel> icon_;
    std::unique_ptr<QLabel> name_;
    std::unique_ptr<QLabel> identifier_;
};

}  // namespace gf
