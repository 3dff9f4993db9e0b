#pragma once

#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QString>
#include <memory>

namespace gf {

// One grant on the wizard's permissions page: its state (a green check or an empty circle), its
// name and why it is needed, and "Grant Access", which can be pressed only while it is missing.
class PermissionRow : public QFrame {
    Q_OBJECT

  public:
    PermissionRow(const QString& title, const QString& detail, QWidget* parent = nullptr);
    ~PermissionRow() override;

    void setGranted(bool granted);
    bool isGranted() const { return granted_; }

    QLabel& statusLabel() { return *status_; }
    QLabel& titleLabel() { return *title_; }
    QLabel& detailLabel() { return *detail_; }
    QPushButton& grantButton() { return *grant_; }

  private:
    bool granted_ = false;
    std::unique_ptr<QLabel> status_;
    std::unique_ptr<QLabel> title_;
    std::unique_ptr<QLabel> detail_;
    std::unique_ptr<QPushButton> grant_;
};

}  // namespace gf
