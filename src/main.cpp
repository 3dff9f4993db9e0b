#include <QApplication>
#include <QCommandLineParser>
#include <array>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "app/AppState.h"
#include "app/BuildInfo.h"
#include "app/GlimmerfoldApp.h"
#include "app/InstanceClient.h"
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

// Exit statuses, as --help and the README give them.
constexpr int exitDone = 0;
constexpr int exitNotRunning = 1;
constexpr int exitCouldNotStart = 1;
constexpr int exitBadUsage = 2;
constexpr int exitNoAnswer = 3;

struct CommandOption {
    const char* name;
    gf::InstanceCommand command;
    const char* description;
};

constexpr std::array<CommandOption, 5> commandOptions{{
    {"enable", gf::InstanceCommand::enable,
     "Switch moving and resizing on in the running Glimmerfold, as its tray menu does."},
    {"disable", gf::InstanceCommand::disable,
     "Switch moving and resizing off in the running Glimmerfold."},
    {"toggle", gf::InstanceCommand::toggle,
     "Switch moving and resizing on when off, and off when on."},
    {"settings", gf::InstanceCommand::showSettings,
     "Open the Settings window, starting Glimmerfold when it is not running."},
    {"quit", gf::InstanceCommand::quit, "Quit the running Glimmerfold."},
}};

constexpr const char* description =
    "Move and resize windows with modifier keys.\n\n"
    "Without options, starts Glimmerfold, or shows the Settings window of the one already\n"
    "running for this user and display. Each option below commands that running one.\n\n"
    "Exit status: 0 done; 1 not running (--settings: could not start); 2 bad usage;\n"
    "3 the running one did not answer.";

int reportBadUsage(const QString& problem) {
    std::cerr << "glimmerfold: " << problem.toStdString() << " See glimmerfold --help.\n";
    return exitBadUsage;
}

std::string notRunningLine() {
    const QString display = qEnvironmentVariable("DISPLAY");
    if (display.isEmpty()) {
        return "Glimmerfold is not running (no X display is set).";
    }
    return "Glimmerfold is not running on display " + display.toStdString() + ".";
}

std::string noAnswerLine(std::chrono::milliseconds waited) {
    return "Glimmerfold is running but did not answer within " +
           std::to_string(waited.count() / 1000) + " seconds.";
}

std::string describe(gf::InstanceReply reply) {
    switch (reply) {
        case gf::InstanceReply::nowEnabled:
            return "Glimmerfold is now enabled.";
        case gf::InstanceReply::alreadyEnabled:
            return "Glimmerfold was already enabled.";
        case gf::InstanceReply::nowDisabled:
            return "Glimmerfold is now disabled.";
        case gf::InstanceReply::alreadyDisabled:
            return "Glimmerfold was already disabled.";
        case gf::InstanceReply::settingsShown:
            return "Glimmerfold's Settings window is open.";
        case gf::InstanceReply::quitting:
            return "Glimmerfold has quit.";
    }
    return {};
}

int commandRunningInstance(gf::InstanceCommand command) {
    gf::InstanceClient client(gf::SingleInstance::defaultServerName());
    switch (client.send(command)) {
        case gf::InstanceClient::Outcome::notRunning:
            std::cerr << notRunningLine() << '\n';
            return exitNotRunning;
        case gf::InstanceClient::Outcome::unanswered:
            std::cerr << noAnswerLine(gf::InstanceClient::defaultAnswerTimeout) << '\n';
            return exitNoAnswer;
        case gf::InstanceClient::Outcome::answered:
            break;
    }
    const gf::InstanceReply reply = *client.reply();
    if (reply == gf::InstanceReply::quitting && !client.waitForInstanceToEnd()) {
        std::cerr << "Glimmerfold was asked to quit but is still running after "
                  << gf::InstanceClient::defaultAnswerTimeout.count() / 1000 << " seconds.\n";
        return exitNoAnswer;
    }
    std::cout << describe(reply) << '\n';
    return exitDone;
}

// The exit status once the command line has been answered; nullopt when this process is to
// launch Glimmerfold, with the Settings window when `showSettings` comes back true.
std::optional<int> answerCommandLine(int argc, char* argv[], bool* showSettings) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Glimmerfold"));
    QCoreApplication::setApplicationVersion(gf::shortVersion());
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromUtf8(description));
    // Qt's own help option adds --help-all for the toolkit's options, which Glimmerfold does
    // not take from its command line.
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help."));
    parser.addOption(help);
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")},
                                     QStringLiteral("Show the version."));
    parser.addOption(version);
    for (const CommandOption& option : commandOptions) {
        parser.addOption(QCommandLineOption(QString::fromLatin1(option.name),
                                            QString::fromUtf8(option.description)));
    }
    if (!parser.parse(QCoreApplication::arguments())) {
        return reportBadUsage(parser.errorText());
    }
    if (parser.isSet(help)) {
        parser.showHelp(exitDone);
    }
    if (parser.isSet(version)) {
        parser.showVersion();
    }
    if (!parser.positionalArguments().isEmpty()) {
        return reportBadUsage(
            QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().first()));
    }
    std::vector<gf::InstanceCommand> asked;
    for (const CommandOption& option : commandOptions) {
        if (parser.isSet(QString::fromLatin1(option.name))) {
            asked.push_back(option.command);
        }
    }
    if (asked.size() != 1) {
        return reportBadUsage(
            QStringLiteral("Give one of --enable, --disable, --toggle, --settings and --quit."));
    }
    if (asked.front() == gf::InstanceCommand::showSettings) {
        *showSettings = true;
        return std::nullopt;
    }
    return commandRunningInstance(asked.front());
}

// A `--settings` that found Glimmerfold running says what came of asking it.
int reportHandOver(const gf::SingleInstance& instance) {
    if (instance.handOverReply() != gf::InstanceReply::settingsShown) {
        std::cerr << noAnswerLine(gf::SingleInstance::handOverTimeout) << '\n';
        return exitNoAnswer;
    }
    std::cout << describe(gf::InstanceReply::settingsShown) << '\n';
    return exitDone;
}

void reportStartedForSettings(const gf::Settings& settings) {
    std::cout << (settings.hasCompletedSetup()
                      ? "Glimmerfold was not running; started it with its Settings window open."
                      : "Glimmerfold was not running; started it with its setup wizard open.")
              << std::endl;
}

}  // namespace

int main(int argc, char* argv[]) {
    bool showSettings = false;
    if (argc > 1) {
        if (const std::optional<int> status = answerCommandLine(argc, argv, &showSettings)) {
            return *status;
        }
    }
    if (!hasXDisplay()) {
        std::cerr << "Glimmerfold needs an X11 session (no X display is set); to see it work in a "
                     "private X server, run `make demo` (scripts/demo).\n";
        return exitCouldNotStart;
    }
    std::string unreachable;
    if (!gf::X11Platform::canReach(qgetenv("DISPLAY").constData(), &unreachable)) {
        std::cerr << "Glimmerfold cannot use the X display: " << unreachable << '\n';
        return exitCouldNotStart;
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
        // A plain launch, as from a desktop menu, has nobody to tell.
        return showSettings ? reportHandOver(instance) : exitDone;
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
        return exitCouldNotStart;
    }

    gf::WidgetUiFactory ui;
    gf::GlimmerfoldApp glimmerfold(gf::Settings::shared(), ui, *x11);
    instance.setCommandHandler(
        [&glimmerfold](gf::InstanceCommand command) { return glimmerfold.carryOut(command); });
    if (showSettings) {
        glimmerfold.showSettingsOnceLaunched();
        reportStartedForSettings(gf::Settings::shared());
    }
    const int status = glimmerfold.run();
    instance.setCommandHandler(nullptr);
    return status;
}
