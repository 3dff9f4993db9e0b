#include <QCommandLineParser>
#include <QCoreApplication>

#include "model/DebugLog.h"
#include "model/Settings.h"

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Glimmerfold"));
    QCoreApplication::setApplicationVersion(QStringLiteral(GLIMMERFOLD_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Move and resize windows with modifier keys."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(app);

    gf::Settings::shared();
    gf::debugLog("Glimmerfold " GLIMMERFOLD_VERSION " started");
    return 0;
}
