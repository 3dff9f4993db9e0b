#include <QApplication>
#include <QCommandLineParser>
#include <cstdlib>
#include <iostream>
#include <string>

#include "app/AppState.h"
#include "app/BuildInfo.h"
#include "app/GlimmerfoldApp.h"
#include "app/SingleInstance.h"
#include "app/TerminationSignals.h"
#include "model/Settings.h"
#include "platform/x11/X11Platform.h"
#include "ui/WidgetUiFactory.h"

namespace {

bool hasXDisplay() {
    return !qEnvironmentVariableIsEmpty("DISPLAY");
}

// Glimmerfold's windows must be X11 windows even where the toolkit would
// prefer another window system, since the X server is what it works with.
void configureTheX11Backend() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "xcb");
    }
    // Its few small windows gain nothing from shared-memory images, and a paint
    // that races the server's end would add the toolkit's complaint about a
    // failed segment to the one line that says the server went away.
    if (!qEnvironmentVariableIsSet("QT_XCB_NO_MITSHM")) {
        qputenv("QT_XCB_NO_MITSHM", "1");
    }
}

// When the toolkit notices first that the X server went away, it says so in
// its own words and exits, and its display library adds two more lines while
// closing. Glimmerfold's one line is said instead, and the process ends at once.
QtMessageHandler toolkitMessageHandler = nullptr;

void reportDisplayLossOnce(QtMsgType type, const QMessageLogContext& context,
                           const QString& message) {
    if (message.startsWith(QLatin1String("The X11 connection broke"))) {
        std::cerr << gf::X11Platform::connectionLostMessage << '\n';
        std::_Exit(1);
    }
    toolkitMessageHandler(type, context, message);
}

// Glimmerfold takes no options besides these two, which need no display.
void parseCommandLine(const QCoreApplication& app) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Move and resize windows with modifier keys."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(app);
    if (!parser.positionalArguments().isEmpty()) {
        parser.showHelp(1);
    }
}

int answerCommandLine(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Glimmerfold"));
    QCoreApplication::setApplicationVersion(gf::shortVersion());
    parseCommandLine(app);
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc > 1) {
        // Prints help or the version and exits, or rejects an unknown option.
        return answerCommandLine(argc, argv);
    }
    if (!hasXDisplay()) {
        std::cerr << "Glimmerfold needs an X11 session (no X display is set); to see it work in a "
                     "private X server, run `make demo` (scripts/demo).\n";
        return 1;
    }
    std::string unreachable;
    if (!gf::X11Platform::canReach(qgetenv("DISPLAY").constData(), &unreachable)) {
        std::cerr << "Glimmerfold cannot use the X display: " << unreachable << '\n';
        return 1;
    }
    configureTheX11Backend();
    toolkitMessageHandler = qInstallMessageHandler(reportDisplayLossOnce);

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Glimmerfold"));
    QApplication::setApplicationVersion(gf::shortVersion());
    QApplication::setDesktopFileName(QStringLiteral("glimmerfold"));
    QApplication::setWindowIcon(
        QIcon::fromTheme(QStringLiteral("glimmerfold"),
                         QIcon(QStringLiteral(":/glimmerfold/icons/glimmerfold.svg"))));
    // Glimmerfold lives in the tray; closing its windows does not end it.
    QApplication::setQuitOnLastWindowClosed(false);

    gf::SingleInstance instance(gf::SingleInstance::defaultServerName());
    if (instance.claim() == gf::SingleInstance::Claim::handedOver) {
        return 0;
    }

    const auto terminationSignals = gf::TerminationSignals::install();
    if (terminationSignals) {
        QObject::connect(terminationSignals.get(), &gf::TerminationSignals::received, &app,
                         [] { QCoreApplication::quit(); });
    }

    std::string error;
    const auto x11 = gf::X11Platform::connect(nullptr, &error);
    if (!x11) {
        std::cerr << "Glimmerfold cannot use the X display: " << error << '\n';
        return 1;
    }

    gf::WidgetUiFactory ui;
    gf::GlimmerfoldApp glimmerfold(gf::Settings::shared(), ui, *x11);
    QObject::connect(&instance, &gf::SingleInstance::showSettingsRequested, &glimmerfold,
                     [&glimmerfold] { glimmerfold.appState().showSettingsWindow(); });
    return glimmerfold.run();
}
