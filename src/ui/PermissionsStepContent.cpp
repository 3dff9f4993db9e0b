#include "ui/PermissionsStepContent.h"

#include <QVBoxLayout>

#include "app/Permissions.h"

namespace gf {

PermissionsStepContent::PermissionsStepContent(std::function<void()> onContinue,
                                               GrantService& grants,
                                               MainThreadScheduler& mainThread, QWidget* parent)
    : WizardPage(QStringLiteral("Continue"), parent),
      onContinue_(std::move(onContinue)),
      grants_(grants),
      mainThread_(mainThread),
      axGranted_(grants.isAccessibilityGranted()),
      inputGranted_(grants.isInputMonitoringGranted()) {
    setContent(makeRows());
    connect(&button(), &QPushButton::clicked, this, [this] {
        if (onContinue_) {
            onContinue_();
        }
    });
    showGrants();
}

PermissionsStepContent::~PermissionsStepContent() = default;

std::unique_ptr<QWidget> PermissionsStepContent::makeRows() {
    auto rows = std::make_unique<QWidget>();
    auto layout = std::make_unique<QVBoxLayout>();
    layout->setContentsMargins(24, 0, 24, 0);
    layout->setSpacing(12);
    auto accessibility = std::make_unique<PermissionRow>(
        QStringLiteral("Accessibility"), QStringLiteral("Required to read and move windows"));
    auto input = std::make_unique<PermissionRow>(
        QStringLiteral("Input Monitoring"), QStringLiteral("Required to detect modifier keys"));
    accessibilityRow_ = accessibility.get();
    inputMonitoringRow_ = input.get();
    layout->addWidget(accessibility.release());
    layout->addWidget(input.release());
    rows->setLayout(layout.release());
    rows_ = rows.get();

    // The requests ask the desktop and, while a grant is missing, show where it comes from; the
    // rows change only when the poll sees the grant.
    connect(&accessibilityRow_->grantButton(), &QPushButton::clicked, this,
            [this] { requestAccessibility(grants_); });
    connect(&inputMonitoringRow_->grantButton(), &QPushButton::clicked, this,
            [this] { requestInputMonitoring(grants_); });
    return rows;
}

// The poll runs exactly while the page is on screen; the first look is one period after it
// appears.
void PermissionsStepContent::showEvent(QShowEvent* event) {
    WizardPage::showEvent(event);
    if (pollTimer_ == nullptr) {
        pollTimer_ = mainThread_.scheduleRepeating(pollPeriod, [this] { poll(); });
    }
}

void PermissionsStepContent::hideEvent(QHideEvent* event) {
    WizardPage::hideEvent(event);
    pollTimer_.reset();
}

void PermissionsStepContent::poll() {
    axGranted_ = grants_.isAccessibilityGranted();
    inputGranted_ = grants_.isInputMonitoringGranted();
    showGrants();
}

void PermissionsStepContent::showGrants() {
    const bool allGranted = axGranted_ && inputGranted_;
    accessibilityRow_->setGranted(axGranted_);
    inputMonitoringRow_->setGranted(inputGranted_);
    button().setEnabled(allGranted);
    if (headerShowsAllGranted_ == allGranted) {
        return;
    }
    headerShowsAllGranted_ = allGranted;
    clearExplanations();
    if (allGranted) {
        setImage(QStringLiteral("granted"), 56);
        setTitle(QStringLiteral("Permissions Granted!"), TextStyle::title2);
        addExplanation(QStringLiteral("You're all set \u2014 Glimmerfold can now move and resize "
                                      "your windows."),
                       TextStyle::body, true);
    } else {
        setImage(QStringLiteral("lock-shield"), 44);
        setTitle(QStringLiteral("Grant Permissions"), TextStyle::title2);
        addExplanation(
            QStringLiteral("Glimmerfold needs two permissions to move and resize windows."),
            TextStyle::body, true);
        showWhyUnavailable();
    }
    rows_->setVisible(!allGranted);
}

// Where asking cannot help, the page says so rather than leave the user pressing buttons; the
// buttons carry the same sentence, and pressing one opens the page that explains it at length.
void PermissionsStepContent::showWhyUnavailable() {
    const QString reason = QString::fromStdString(grants_.whyUnavailable());
    for (PermissionRow* row : {accessibilityRow_, inputMonitoringRow_}) {
        row->grantButton().setToolTip(reason);
    }
    if (!reason.isEmpty()) {
        // The one thing on the page the user can act on: not dimmed like the explanations.
        addExplanation(reason, TextStyle::body, true).setPalette(palette());
    }
}

}  // namespace gf
