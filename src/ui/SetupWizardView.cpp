#include "ui/SetupWizardView.h"

#include "app/AppState.h"
#include "ui/ModifierKeyPicker.h"
#include "ui/PermissionsStepContent.h"
#include "ui/WizardPage.h"

namespace gf {

SetupWizardView::SetupWizardView(Settings& settings, AppState& appState, QWidget* parent)
    : QWidget(parent), settings_(settings), appState_(appState) {
    setFixedSize(width, height);
    auto column = std::make_unique<QVBoxLayout>();
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column_ = column.get();
    setLayout(column.release());
    goToStep(0);
}

SetupWizardView::~SetupWizardView() = default;

// The old page is hidden at once, which stops the permissions page's poll, and deleted from the
// event loop, since the click that got here came from its own button.
void SetupWizardView::goToStep(int step) {
    step_ = step;
    if (page_ != nullptr) {
        page_->hide();
        page_.release()->deleteLater();
    }
    page_ = makePage(step);
    column_->addWidget(page_.get());
    // A widget added to a shown window would only appear from the event loop; the page (and
    // its poll) should start now.
    page_->show();
}

std::unique_ptr<QWidget> SetupWizardView::makePage(int step) {
    switch (step) {
        case 0:
            return makeWelcomePage();
        case 1:
            return makePermissionsPage();
        case 2:
            return makeShortcutsPage();
        default:
            return makeDonePage();
    }
}

std::unique_ptr<QWidget> SetupWizardView::makeWelcomePage() {
    auto page = std::make_unique<WizardPage>(QStringLiteral("Get Started"));
    page->setImage(QStringLiteral("welcome"), 56);
    page->setTitle(QStringLiteral("Welcome to Glimmerfold"), TextStyle::title);
    page->addExplanation(QStringLiteral("Move and resize windows from anywhere"), TextStyle::title3,
                         false);
    page->addExplanation(QStringLiteral("Hold modifier keys and drag anywhere in a window to move "
                                        "or resize it \u2014 no need to aim for the title bar or "
                                        "edges."),
                         TextStyle::body, true);
    connect(&page->button(), &QPushButton::clicked, this, [this] { goToStep(1); });
    return page;
}

std::unique_ptr<QWidget> SetupWizardView::makePermissionsPage() {
    Platform& platform = appState_.platform();
    return std::make_unique<PermissionsStepContent>([this] { goToStep(2); }, platform.grants,
                                                    platform.mainThread);
}

std::unique_ptr<QWidget> SetupWizardView::makeShortcutsPage() {
    auto page = std::make_unique<WizardPage>(QStringLiteral("Continue"));
    page->setImage(QStringLiteral("keyboard"), 44);
    page->setTitle(QStringLiteral("Configure Shortcuts"), TextStyle::title2);
    page->addExplanation(QStringLiteral("Choose which modifier keys activate move and resize."),
                         TextStyle::body, true);

    auto pickers = std::make_unique<QWidget>();
    auto layout = std::make_unique<QVBoxLayout>();
    layout->setContentsMargins(0, 8, 0, 0);
    layout->setSpacing(12);
    layout->addWidget(std::make_unique<ModifierKeyPicker>(QStringLiteral("Move:"), settings_,
                                                          property::moveModifiers)
                          .release(),
                      0, Qt::AlignLeft);
    layout->addWidget(std::make_unique<ModifierKeyPicker>(QStringLiteral("Resize:"), settings_,
                                                          property::resizeModifiers)
                          .release(),
                      0, Qt::AlignLeft);
    pickers->setLayout(layout.release());
    page->setContent(std::move(pickers));

    connect(&page->button(), &QPushButton::clicked, this, [this] { goToStep(3); });
    return page;
}

std::unique_ptr<QWidget> SetupWizardView::makeDonePage() {
    auto page = std::make_unique<WizardPage>(QStringLiteral("Finish"));
    page->setImage(QStringLiteral("granted"), 56);
    page->setTitle(QStringLiteral("You're all set!"), TextStyle::title);
    page->addExplanation(
        QStringLiteral("Glimmerfold is ready. Hold your modifier keys and drag any "
                       "window to move or resize it."),
        TextStyle::body, true);
    connect(&page->button(), &QPushButton::clicked, this, &SetupWizardView::finish);
    return page;
}

// In this order: record, close, start. Closing the window lets it go only once control is back
// in the event loop, so this view outlives its own button's click.
void SetupWizardView::finish() {
    settings_.setHasCompletedSetup(true);
    appState_.closeSetupWizardWindow();
    appState_.setup();
}

}  // namespace gf
