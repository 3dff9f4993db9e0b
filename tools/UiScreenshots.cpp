// Shows every Settings tab and every setup-wizard page on a private X server with openbox, an
// xterm and an xlogo, walks through them as a user would, and saves what the server shows of each
// as a PNG in the folder given as the only argument (make screenshots: build/screenshots). Exits
// with 1 when a step did not behave (each is reported on stderr).

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QMessageBox>
#include <QPixmap>
#include <QScreen>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QWindow>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "app/AppState.h"
#include "model/Settings.h"
#include "platform/QtMainThreadScheduler.h"
#include "platform/ThreadSerialQueueFactory.h"
#include "platform/x11/X11GrantService.h"
#include "platform/x11/X11Platform.h"
#include "ui/GeneralSettingsView.h"
#include "ui/IgnoreListSettingsView.h"
#include "ui/PermissionsStepContent.h"
#include "ui/SettingsWindow.h"
#include "ui/SetupWizardView.h"
#include "ui/WidgetUiFactory.h"
#include "x11/DesktopProbe.h"
#include "x11/WaitUntil.h"
#include "x11/X11Desktop.h"

namespace gf::test {
namespace {

using namespace std::chrono_literals;

// Grants the script hands out itself: on X11 both are simply there, which would leave the
// wizard's "missing" state unseen.
class ScriptedGrants final : public GrantService {
  public:
    bool isAccessibilityGranted() override { return accessibility; }
    bool isInputMonitoringGranted() override { return inputMonitoring; }
    bool requestAccessibility() override { return accessibility; }
    bool requestInputMonitoring() override { return inputMonitoring; }
    std::string whyUnavailable() override { return unavailable; }
    void showWhereToGrant() override {}

    // What a Wayland session looks like to Glimmerfold, in its own words.
    void becomeWayland() {
        X11GrantService wayland(true, [](const char* name) -> std::optional<std::string> {
            return std::string(name) == "XDG_SESSION_TYPE" ? std::optional<std::string>("wayland")
                                                           : std::nullopt;
        });
        accessibility = wayland.isAccessibilityGranted();
        inputMonitoring = wayland.isInputMonitoringGranted();
        unavailable = wayland.whyUnavailable();
    }

    bool accessibility = true;
    bool inputMonitoring = false;
    std::string unavailable;
};

struct XcbDisconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

class Screenshots {
  public:
    // `connection` is only read from, to find the window manager's frames.
    Screenshots(QDir folder, xcb_connection_t* connection)
        : folder_(std::move(folder)),
          probe_(connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root) {}

    // Saves the screen area covering the windows' frames once it has stopped changing.
    void save(const QString& name, const std::vector<QWidget*>& windows) {
        QRect area;
        for (QWidget* window : windows) {
            std::optional<Rect> frame;
            const bool shown = waitUntil(
                [&] {
                    frame = frameOf(*window);
                    return frame.has_value();
                },
                5000ms);
            if (!shown) {
                fail(QStringLiteral("%1: a window did not appear").arg(name));
                return;
            }
            area =
                area.united(QRect(static_cast<int>(frame->x), static_cast<int>(frame->y),
                                  static_cast<int>(frame->width), static_cast<int>(frame->height)));
        }
        QImage image = settledImage(area);
        const QString path = folder_.filePath(name + QStringLiteral(".png"));
        if (image.isNull() || !image.save(path)) {
            fail(QStringLiteral("%1: could not be saved").arg(path));
            return;
        }
        std::cout << "saved " << path.toStdString() << '\n';
    }

    void check(bool condition, const QString& what) {
        if (!condition) {
            fail(what);
        }
    }

    int failures() const { return failures_; }

  private:
    // The window manager's frame around the shown window, as the X server has it: Qt learns of
    // the frame only later, if at all, for a dialog that is never moved.
    std::optional<Rect> frameOf(QWidget& window) const {
        QWindow* handle = window.windowHandle();
        if (!window.isVisible() || handle == nullptr || !handle->isExposed()) {
            return std::nullopt;
        }
        const auto client = static_cast<WindowId>(window.winId());
        if (!probe_.isManaged(client)) {
            return std::nullopt;
        }
        return probe_.frameGeometry(client);
    }

    // The window manager and Qt draw asynchronously: the picture counts once two reads from the
    // server a little apart agree.
    static QImage settledImage(const QRect& area) {
        QScreen* screen = QGuiApplication::primaryScreen();
        QImage previous;
        QImage current;
        waitUntil(
            [&] {
                previous = current;
                current = screen->grabWindow(0, area.x(), area.y(), area.width(), area.height())
                              .toImage();
                processEventsFor(40ms);
                return !previous.isNull() && previous == current;
            },
            5000ms);
        return current;
    }

    void fail(const QString& what) {
        ++failures_;
        std::cerr << "FAILED: " << what.toStdString() << '\n';
    }

    QDir folder_;
    DesktopProbe probe_;
    int failures_ = 0;
};

template <typename T>
T* find(QWidget* window) {
    return window == nullptr ? nullptr : window->findChild<T*>();
}

void clickPageButton(SetupWizardView& wizard) {
    qobject_cast<WizardPage*>(&wizard.page())->button().click();
}

void walkThroughWizard(AppState& appState, ScriptedGrants& grants, Screenshots& shots) {
    appState.showSetupWizard();
    QWidget* window = appState.setupWizardWindow();
    SetupWizardView* wizard = find<SetupWizardView>(window);
    if (wizard == nullptr) {
        shots.check(false, QStringLiteral("the wizard window has no wizard"));
        return;
    }
    shots.save(QStringLiteral("wizard-0-welcome"), {window});
    clickPageButton(*wizard);

    auto* permissions = qobject_cast<PermissionsStepContent*>(&wizard->page());
    shots.save(QStringLiteral("wizard-1-permissions-missing"), {window});
    grants.inputMonitoring = true;
    shots.check(waitUntil([&] { return permissions->button().isEnabled(); }, 5000ms),
                QStringLiteral("the poll did not notice the grant"));
    shots.save(QStringLiteral("wizard-1-permissions-granted"), {window});
    clickPageButton(*wizard);

    shots.save(QStringLiteral("wizard-2-shortcuts"), {window});
    clickPageButton(*wizard);
    shots.save(QStringLiteral("wizard-3-done"), {window});
    clickPageButton(*wizard);
}

// Reopened as "Check Permissions..." would, in a session where the grants cannot be had; its
// close button is the way out.
void showWizardUnderWayland(AppState& appState, ScriptedGrants& grants, Screenshots& shots) {
    grants.becomeWayland();
    appState.showSetupWizard();
    QWidget* window = appState.setupWizardWindow();
    SetupWizardView* wizard = find<SetupWizardView>(window);
    if (wizard == nullptr) {
        shots.check(false, QStringLiteral("the reopened wizard window has no wizard"));
        return;
    }
    clickPageButton(*wizard);
    shots.save(QStringLiteral("wizard-1-permissions-wayland"), {window});
    window->close();
    shots.check(appState.setupWizardWindow() == nullptr,
                QStringLiteral("closing the wizard did not close it"));
}

void showGeneralTab(SettingsWindow& settingsWindow, QWidget* window, Screenshots& shots) {
    settingsWindow.selectTab(SettingsTab::general);
    shots.save(QStringLiteral("settings-general"), {window});
    auto* general = qobject_cast<GeneralSettingsView*>(&settingsWindow.detailView());
    general->verticalScrollBar()->setValue(general->verticalScrollBar()->maximum());
    shots.save(QStringLiteral("settings-general-startup"), {window});

    general->showStatusMenuToggle().click();
    QMessageBox* question = general->hideIconConfirmation();
    shots.check(question != nullptr, QStringLiteral("no question before hiding the status menu"));
    if (question != nullptr) {
        shots.save(QStringLiteral("settings-general-hide-icon"), {window, question});
        question->reject();
    }
}

void showIgnoreListTab(SettingsWindow& settingsWindow, QWidget* window, Screenshots& shots) {
    settingsWindow.selectTab(SettingsTab::ignoreList);
    auto* ignoreList = qobject_cast<IgnoreListSettingsView*>(&settingsWindow.detailView());
    ignoreList->addButton().click();
    RunningAppsPicker* picker = ignoreList->appPicker();
    shots.check(picker != nullptr, QStringLiteral("plus did not open the running applications"));
    if (picker == nullptr) {
        return;
    }
    shots.save(QStringLiteral("settings-ignore-list-picker"), {window, picker});
    std::size_t xterm = picker->candidates().size();
    for (std::size_t i = 0; i < picker->candidates().size(); ++i) {
        if (picker->candidates()[i].identifier.value_or("").find("XTerm") != std::string::npos) {
            xterm = i;
        }
    }
    shots.check(xterm < picker->candidates().size(),
                QStringLiteral("the running xterm is not offered"));
    if (xterm < picker->candidates().size()) {
        picker->rowButton(xterm).click();
    }
    ignoreList->list().setCurrentRow(ignoreList->list().count() - 1);
    shots.save(QStringLiteral("settings-ignore-list"), {window});
}

void walkThroughSettings(AppState& appState, Screenshots& shots) {
    appState.showSettingsWindow();
    QWidget* window = appState.settingsWindow();
    SettingsWindow* settingsWindow = find<SettingsWindow>(window);
    if (settingsWindow == nullptr) {
        shots.check(false, QStringLiteral("the Settings window has no tabs"));
        return;
    }
    showGeneralTab(*settingsWindow, window, shots);
    settingsWindow->selectTab(SettingsTab::magnetics);
    shots.save(QStringLiteral("settings-magnetics"), {window});
    showIgnoreListTab(*settingsWindow, window, shots);
    settingsWindow->selectTab(SettingsTab::about);
    shots.save(QStringLiteral("settings-about"), {window});
}

int run(const QString& folder) {
    QDir().mkpath(folder);
    std::string error;
    std::unique_ptr<X11Platform> x11 = X11Platform::connect(nullptr, &error);
    if (x11 == nullptr) {
        std::cerr << "cannot connect to the X server: " << error << '\n';
        return 1;
    }
    QTemporaryDir home;
    Settings settings(home.filePath(QStringLiteral("glimmerfold.conf")));
    // One application that is not installed, shown without an icon.
    settings.setIgnoreList({{"org.example.Unavailable", "Example Editor"}});

    QtMainThreadScheduler mainThread;
    ThreadSerialQueueFactory queues;
    ScriptedGrants grants;
    const Platform real = x11->platform(mainThread, queues);
    Platform platform{real.input,      real.windowServer, real.windowControl,
                      real.displays,   real.applications, grants,
                      real.mainThread, real.queues,       real.ownPid};
    WidgetUiFactory ui;
    AppState appState(settings, platform, ui);

    const std::unique_ptr<xcb_connection_t, XcbDisconnect> connection(
        xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) {
        std::cerr << "cannot open a second connection to the X server\n";
        return 1;
    }
    Screenshots shots(QDir(folder), connection.get());
    walkThroughWizard(appState, grants, shots);
    showWizardUnderWayland(appState, grants, shots);
    walkThroughSettings(appState, shots);
    appState.stopEngine();
    return shots.failures() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace gf::test

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: glimmerfold_ui_screenshots <folder for the PNG files>\n";
        return 2;
    }
    std::string error;
    auto desktop = gf::test::X11Desktop::start({}, &error);
    if (!desktop) {
        std::cerr << "cannot start the private X server: " << error << '\n';
        return 1;
    }
    // The running applications the ignore list offers.
    desktop->startXterm(40, 40);
    desktop->startXlogo(700, 60, 200, 200);
    setenv("DISPLAY", desktop->displayName().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("XDG_SESSION_TYPE", "x11", 1);
    // Whatever the views write (the login item) stays in the desktop's directory.
    setenv("XDG_CONFIG_HOME", (desktop->directory() / "config").c_str(), 1);
    QApplication application(argc, argv);
    return gf::test::run(QString::fromLocal8Bit(argv[1]));
}
