#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QTemporaryDir>
#include <memory>

#include "TestHelpers.h"
#include "app/AppState.h"
#include "fake/FakeDesktop.h"
#include "model/Settings.h"
#include "ui/WidgetUiFactory.h"

namespace gf::test {

// Views on a fake desktop; a private XDG_CONFIG_HOME keeps login-item changes inside the test.
class UiTest : public ::testing::Test {
  protected:
    QString settingsPath() const { return dir_.filePath(QStringLiteral("glimmerfold.conf")); }

    Settings& settings() { return settings_; }
    FakeDesktop& desktop() { return desktop_; }

    AppState& appState() {
        if (appState_ == nullptr) {
            appState_ = std::make_unique<AppState>(settings_, platform_, ui_);
        }
        return *appState_;
    }

    // Deletes closed dialogs too, which processEvents() alone does not do outside a running loop.
    static void processEvents() {
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

  private:
    QTemporaryDir dir_;
    ScopedEnvironment configHome_{"XDG_CONFIG_HOME", dir_.filePath("config").toLocal8Bit()};
    Settings settings_{settingsPath()};
    FakeDesktop desktop_;
    Platform platform_ = desktop_.platform();
    WidgetUiFactory ui_;
    std::unique_ptr<AppState> appState_;  // goes first, as it works with everything above
};

}  // namespace gf::test
