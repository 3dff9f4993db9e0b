#include "ui/StatusBarMenu.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>

#include "app/AppState.h"
#include "app/UpdateController.h"
#include "ui/UiIcons.h"

namespace gf {

namespace {

const QColor grantedColor(0x1e, 0x8e, 0x3e);
const QColor missingColor(0xd9, 0x30, 0x25);

std::unique_ptr<QAction> separator() {
    auto action = std::make_unique<QAction>();
    action->setSeparator(true);
    return action;
}

// A grant line: an icon and a coloured text, laid out like a menu item's.
class GrantLineWidget : public QWidget {
  public:
    GrantLineWidget() {
        setLayout(&layout_);
        const int indent = style()->pixelMetric(QStyle::PM_MenuHMargin) +
                           style()->pixelMetric(QStyle::PM_MenuPanelWidth) + 4;
        layout_.setContentsMargins(indent, 3, indent * 2, 3);
        layout_.setSpacing(6);
        layout_.addWidget(&icon_);
        layout_.addWidget(&text_, 1);
    }

    void display(const QString& text, const QIcon& icon, const QColor& color) {
        const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
        icon_.setPixmap(icon.pixmap(size, size));
        text_.setText(text);
        QPalette palette = text_.palette();
        palette.setColor(QPalette::WindowText, color);
        text_.setPalette(palette);
    }

  private:
    // Declared before the layout so the layout goes first.
    QLabel icon_;
    QLabel text_;
    QHBoxLayout layout_;
};

std::unique_ptr<QWidgetAction> grantLine() {
    auto action = std::make_unique<QWidgetAction>(nullptr);
    // The action takes the widget over.
    action->setDefaultWidget(std::make_unique<GrantLineWidget>().release());
    return action;
}

}  // namespace

StatusBarMenu::StatusBarMenu(Settings& settings, AppState& appState, QWidget* parent)
    : QMenu(parent),
      settings_(settings),
      appState_(appState),
      running_(std::make_unique<QAction>()),
      firstSeparator_(separator()),
      accessibilityLine_(grantLine()),
      inputMonitoringLine_(grantLine()),
      checkPermissions_(std::make_unique<QAction>(QStringLiteral("Check Permissions..."))),
      secondSeparator_(separator()),
      settingsItem_(std::make_unique<QAction>(QStringLiteral("Settings..."))),
      checkForUpdates_(std::make_unique<QAction>(QStringLiteral("Check for Updates..."))),
      thirdSeparator_(separator()),
      quit_(std::make_unique<QAction>(QStringLiteral("Quit Glimmerfold"))) {
    setTitle(QStringLiteral("Glimmerfold"));
    running_->setCheckable(true);
    settingsItem_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    quit_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    for (QAction* action : {settingsItem_.get(), quit_.get()}) {
        action->setShortcutVisibleInContextMenu(true);
    }

    // Each action is its own connections' context: a menu that lets an action
    // go cuts every connection from it to the menu.
    connect(running_.get(), &QAction::triggered, running_.get(),
            [this] { settings_.setIsEnabled(!settings_.isEnabled()); });
    connect(&settings_, &Settings::isEnabledChanged, this, [this] { updateRunningItem(); });
    connect(checkPermissions_.get(), &QAction::triggered, checkPermissions_.get(),
            [this] { appState_.showSetupWizard(); });
    connect(settingsItem_.get(), &QAction::triggered, settingsItem_.get(),
            [this] { appState_.showSettingsWindow(); });
    connect(checkForUpdates_.get(), &QAction::triggered, checkForUpdates_.get(),
            [this] { appState_.updaterController().checkForUpdates(); });
    connect(quit_.get(), &QAction::triggered, quit_.get(), [] { QCoreApplication::quit(); });
    connect(this, &QMenu::aboutToShow, this, &StatusBarMenu::refresh);

    updateRunningItem();
    refresh();
}

StatusBarMenu::~StatusBarMenu() {
    // The actions are members; detach them before QWidget's destructor looks at them.
    clear();
}

void StatusBarMenu::refresh() {
    axGranted_ = appState_.platform().grants.isAccessibilityGranted();
    inputGranted_ = appState_.platform().grants.isInputMonitoringGranted();
    rebuild();
}

void StatusBarMenu::rebuild() {
    clear();
    showGrant(*accessibilityLine_, QStringLiteral("Accessibility"), axGranted_);
    showGrant(*inputMonitoringLine_, QStringLiteral("Input Monitoring"), inputGranted_);
    addAction(running_.get());
    addAction(firstSeparator_.get());
    addAction(accessibilityLine_.get());
    addAction(inputMonitoringLine_.get());
    if (!axGranted_ || !inputGranted_) {
        addAction(checkPermissions_.get());
    }
    addAction(secondSeparator_.get());
    addAction(settingsItem_.get());
    addAction(checkForUpdates_.get());
    addAction(thirdSeparator_.get());
    addAction(quit_.get());
}

void StatusBarMenu::updateRunningItem() {
    const bool enabled = settings_.isEnabled();
    running_->setChecked(enabled);
    running_->setText(enabled ? QStringLiteral("Glimmerfold: Running")
                              : QStringLiteral("Glimmerfold: Stopped"));
}

void StatusBarMenu::showGrant(QWidgetAction& line, const QString& name, bool granted) {
    const QString text =
        name + (granted ? QStringLiteral(": Granted") : QStringLiteral(": Missing"));
    const QIcon icon = uiIcon(granted ? QStringLiteral("granted") : QStringLiteral("not-granted"));
    line.setText(text);
    line.setIcon(icon);
    static_cast<GrantLineWidget*>(line.defaultWidget())
        ->display(text, icon, granted ? grantedColor : missingColor);
}

}  // namespace gf
