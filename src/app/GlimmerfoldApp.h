#pragma once

#include <QObject>
#include <memory>

#include "app/InstanceCommand.h"
#include "app/InstanceReply.h"
#include "model/Settings.h"
#include "platform/PlatformBackend.h"

namespace gf {

class AppDelegate;
class AppState;
class QtMainThreadScheduler;
class ThreadSerialQueueFactory;
class TaskbarPresence;
class TrayItem;
class UiFactory;

// The running program: the desktop's services with real timers and queues,
// the application state, the tray item and the delegate, wired together.
// Create it after the QApplication, on the main thread.
class GlimmerfoldApp : public QObject {
    Q_OBJECT

  public:
    GlimmerfoldApp(Settings& settings, UiFactory& ui, PlatformBackend& backend);
    ~GlimmerfoldApp() override;

    // Runs the event loop until the program quits; the exit code.
    int run();
    // Once launching has finished, opens the Settings window too, unless the setup wizard
    // comes first.
    void showSettingsOnceLaunched();
    // Carries out a command sent from the command line as the tray menu's items do, and says
    // what is true afterwards.
    InstanceReply carryOut(InstanceCommand command);

    AppState& appState() { return *appState_; }
    TrayItem& trayItem() { return *trayItem_; }

  private:
    InstanceReply switchTo(bool enabled);

    Settings& settings_;
    bool showSettingsOnceLaunched_ = false;
    std::unique_ptr<QtMainThreadScheduler> mainThread_;
    std::unique_ptr<ThreadSerialQueueFactory> queues_;
    Platform platform_;
    std::unique_ptr<TaskbarPresence> taskbarPresence_;
    std::unique_ptr<AppState> appState_;
    std::unique_ptr<TrayItem> trayItem_;
    std::unique_ptr<AppDelegate> delegate_;
};

}  // namespace gf
