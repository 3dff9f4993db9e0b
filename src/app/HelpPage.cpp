#include "app/HelpPage.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace gf {

namespace {

const QString pageName = QStringLiteral("x11-session.html");
const QString resourcePath = QStringLiteral(":/glimmerfold/help/x11-session.html");

QString installedPagePath() {
    if (QCoreApplication::instance() == nullptr) {
        return {};
    }
    // The program lives in <prefix>/bin, its documentation in <prefix>/share/doc/glimmerfold.
    const QDir prefix(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
    return prefix.absoluteFilePath(QStringLiteral(GLIMMERFOLD_DOC_SUBDIR "/") + pageName);
}

// A browser cannot read Qt resources, so the copy is written out once.
QString pageCopiedFromResources() {
    const QString directory = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (directory.isEmpty() || !QDir().mkpath(directory)) {
        return {};
    }
    const QString path = QDir(directory).absoluteFilePath(pageName);
    QFile source(resourcePath);
    if (!source.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray page = source.readAll();
    QFile target(path);
    if (target.open(QIODevice::ReadOnly) && target.readAll() == page) {
        return path;
    }
    target.close();
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        target.write(page) != page.size()) {
        return {};
    }
    return path;
}

}  // namespace

QUrl helpPageUrl() {
    const QString installed = installedPagePath();
    if (!installed.isEmpty() && QFileInfo(installed).isFile()) {
        return QUrl::fromLocalFile(QFileInfo(installed).canonicalFilePath());
    }
    const QString copied = pageCopiedFromResources();
    return copied.isEmpty() ? QUrl() : QUrl::fromLocalFile(copied);
}

bool openHelpPage() {
    const QUrl url = helpPageUrl();
    return !url.isEmpty() && QDesktopServices::openUrl(url);
}

}  // namespace gf
