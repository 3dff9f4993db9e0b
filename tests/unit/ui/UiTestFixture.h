#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QByteArray>
#include <QTemporaryDir>
#include <memory>

#include "app/AppState.h"
#include "fake/FakeDesktop.h"
#include "model/Settings.h"
#include "ui/WidgetUiFactory.h"

namespace gf::test {

// Views on a fake desktop: settings in a file of their own, an AppState over the fake platform,
// and a private XDG_CONFIG_HOME so that login-item changes stay inside the test.
class UiTest : public ::testing::Test {
  protected:
    UiTest() : settings_(std::make_unique<Settings>(settingsPath())) {
        previousConfigHome_ = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", dir_.filePath(QStringLiteral("config")).toLocal8Bit());
    }

    ~UiTest() override {
        appState_.reset();
        qputenv("XDG_CONFIG_HOME", previousConfigHome_);
    }

    QString settingsPath() const { return dir_.filePath(QStringLiteral("glimmerfold.conf")); }

    Settings& settings() { return *settings_; }
    FakeDesktop& desktop() { return desktop_; }

    AppState& appState() {
        if (appState_ == nullptr) {
            appState_ = std::make_unique<AppState>(*settings_, platform_, ui_);
        }
        return *appState_;
    }

    // Runs what views leave to the event loop, including deleting closed dialogs and pages,
    // which processEvents() alone does not do outside a running loop.
    static void processEvents() {
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

  private:
    QTemporaryDir dir_;
    QByteArray previousConfigHome_;
    std::unique_ptr<Settings> settings_;
    FakeDesktop desktop_;
    Platform platform_ = desktop_.platform();
    WidgetUiFactory ui_;
    std::unique_ptr<AppState> appState_;
};

}  // namespace gf::test
