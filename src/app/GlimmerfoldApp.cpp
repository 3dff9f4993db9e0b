#include "app/GlimmerfoldApp.h"

#include <QApplication>
#include <QTimer>
#include <cstdlib>

#include "app/AppDelegate.h"
#include "app/AppState.h"
#include "app/TrayItem.h"
#include "platform/QtMainThreadScheduler.h"
#include "platform/TaskbarPresence.h"
#include "platform/ThreadSerialQueueFactory.h"

namespace gf {

GlimmerfoldApp::GlimmerfoldApp(Settings& settings, UiFactory& ui, PlatformBackend& backend)
    : settings_(settings),
      mainThread_(std::make_unique<QtMainThreadScheduler>()),
      queues_(std::make_unique<ThreadSerialQueueFactory>()),
      platform_(backend.platform(*mainThread_, *queues_)),
      taskbarPresence_(backend.taskbarPresence()),
      appState_(std::make_unique<AppState>(settings_, platform_, ui)),
      trayItem_(std::make_unique<TrayItem>(settings_, *appState_, ui)),
      delegate_(std::make_unique<AppDelegate>(*appState_)) {
    appState_->setTaskbarPresence(taskbarPresence_.get());
    appState_->setTrayAvailability(&TrayItem::isTrayAvailable);
    // Queued: the request comes from inside a window's close, which should finish first.
    connect(appState_.get(), &AppState::quitRequested, qApp, &QCoreApplication::quit,
            Qt::QueuedConnection);
    // The toolkit notices the broken connection too and, given the chance, adds lines of its own
    // on the way out (its display library complains while closing); with the server gone there
    // is nothing left to tidy up on the screen, and every setting was saved when it was made, so
    // the program ends here without running the exit handlers.
    backend.setConnectionLostHandler([] { std::_Exit(1); });
    connect(qApp, &QCoreApplication::aboutToQuit, this,
            [this] { delegate_->applicationWillTerminate(); });
}

GlimmerfoldApp::~GlimmerfoldApp() {
    appState_->setTaskbarPresence(nullptr);
}

int GlimmerfoldApp::run() {
    QTimer::singleShot(0, this, [this] {
        delegate_->applicationDidFinishLaunching();
        if (showSettingsOnceLaunched_ && settings_.hasCompletedSetup()) {
            appState_->showSettingsWindow();
        }
    });
    return QApplication::exec();
}

void GlimmerfoldApp::showSettingsOnceLaunched() {
    showSettingsOnceLaunched_ = true;
}

InstanceReply GlimmerfoldApp::carryOut(InstanceCommand command) {
    switch (command) {
        case InstanceCommand::enable:
            return switchTo(true);
        case InstanceCommand::disable:
            return switchTo(false);
        case InstanceCommand::toggle:
            return switchTo(!settings_.isEnabled());
        case InstanceCommand::showSettings:
            // Showing a window runs events; the answer goes out first.
            QTimer::singleShot(0, this, [this] { appState_->showSettingsWindow(); });
            return InstanceReply::settingsShown;
        case InstanceCommand::quit:
            // As the tray menu's "Quit Glimmerfold" does, once the answer has gone out.
            QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
            return InstanceReply::quitting;
    }
    Q_UNREACHABLE();
    return InstanceReply::alreadyEnabled;
}

// What the tray menu's running switch does: the setting is saved at once, and AppState follows
// it by stopping or restarting the event tap.
InstanceReply GlimmerfoldApp::switchTo(bool enabled) {
    if (settings_.isEnabled() == enabled) {
        return enabled ? InstanceReply::alreadyEnabled : InstanceReply::alreadyDisabled;
    }
    settings_.setIsEnabled(enabled);
    return settings_.isEnabled() ? InstanceReply::nowEnabled : InstanceReply::nowDisabled;
}

}  // namespace gf
