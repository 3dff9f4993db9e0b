#pragma once

#include <QVBoxLayout>
#include <QWidget>
#include <memory>

#include "model/Settings.h"

namespace gf {

class AppState;

// The first-run wizard, 500 x 400: Welcome, the two grants, the move and resize keys, and Done.
// Steps only move forward, by each page's button; "Finish" records that setup is complete and
// hands over to the normal start-up path.
class SetupWizardView : public QWidget {
    Q_OBJECT

  public:
    static constexpr int width = 500;
    static constexpr int height = 400;

    SetupWizardView(Settings& settings, AppState& appState, QWidget* parent = nullptr);
    ~SetupWizardView() override;

    int step() const { return step_; }
    // The page of the current step.
    QWidget& page() { return *page_; }

  private:
    void goToStep(int step);
    std::unique_ptr<QWidget> makePage(int step);
    std::unique_ptr<QWidget> makeWelcomePage();
    std::unique_ptr<QWidget> makePermissionsPage();
    std::unique_ptr<QWidget> makeShortcutsPage();
    std::unique_ptr<QWidget> makeDonePage();
    void finish();

    Settings& settings_;
    AppState& appState_;
    int step_ = 0;
    std::unique_ptr<QWidget> page_;
    QVBoxLayout* column_ = nullptr;  // owned by the view through setLayout
};

}  // namespace gf
