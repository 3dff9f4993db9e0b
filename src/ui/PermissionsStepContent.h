#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "platform/GrantService.h"
#include "platform/MainThreadScheduler.h"
#include "platform/Timer.h"
#include "ui/PermissionRow.h"
#include "ui/WizardPage.h"

namespace gf {

// The wizard's permissions page. It shows the two grants as they were when the page was made and
// reads them again every 2.0 seconds while the page is on screen, so a grant given in the
// meantime shows up by itself; "Continue" works only with both grants present. Where a grant
// cannot be had in this session at all, it says why and what to do instead.
class PermissionsStepContent : public WizardPage {
    Q_OBJECT

  public:
    static constexpr std::chrono::milliseconds pollPeriod{2000};

    PermissionsStepContent(std::function<void()> onContinue, GrantService& grants,
                           MainThreadScheduler& mainThread, QWidget* parent = nullptr);
    ~PermissionsStepContent() override;

    bool axGranted() const { return axGranted_; }
    bool inputGranted() const { return inputGranted_; }
    bool isPolling() const { return pollTimer_ != nullptr; }

    PermissionRow& accessibilityRow() { return *accessibilityRow_; }
    PermissionRow& inputMonitoringRow() { return *inputMonitoringRow_; }

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    std::unique_ptr<QWidget> makeRows();
    void poll();
    void showGrants();
    void showWhyUnavailable();

    std::function<void()> onContinue_;
    GrantService& grants_;
    MainThreadScheduler& mainThread_;
    bool axGranted_;
    bool inputGranted_;
    std::optional<bool> headerShowsAllGranted_;
    std::unique_ptr<Timer> pollTimer_;
    // Owned by the page's content through Qt parenting.
    QWidget* rows_ = nullptr;
    PermissionRow* accessibilityRow_ = nullptr;
    PermissionRow* inputMonitoringRow_ = nullptr;
};

}  // namespace gf
