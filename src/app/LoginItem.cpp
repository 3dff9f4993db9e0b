#include "app/LoginItem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <iostream>

namespace gf {

namespace {

QString configHome() {
    const QString fromEnvironment = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (QDir::isAbsolutePath(fromEnvironment)) {
        return fromEnvironment;
    }
    return QDir::homePath() + QStringLiteral("/.config");
}

QString programPath() {
    if (QCoreApplication::instance() != nullptr) {
        return QCoreApplication::applicationFilePath();
    }
    return QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
}

// The Exec key's quoting rules: a path with reserved characters is put in
// double quotes, inside which ", `, $ and \ are escaped.
QString quotedForExec(const QString& path) {
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    const bool needsQuotes =
        std::any_of(path.begin(), path.end(), [](QChar c) { return reserved.contains(c); });
    if (!needsQuotes) {
        return QString(path).replace(QLatin1Char('%'), QStringLiteral("%%"));
    }
    QString quoted;
    for (const QChar c : path) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') ||
            c == QLatin1Char('\\')) {
            quoted.append(QLatin1Char('\\'));
        }
        quoted.append(c);
    }
    // The desktop file's own string escaping doubles every backslash again,
    // and a percent sign would start a field code.
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    quoted.replace(QLatin1Char('%'), QStringLiteral("%%"));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QByteArray autostartEntry() {
    return QStringLiteral(
               "[Desktop Entry]\n"
               "Type=Application\n"
               "Name=Glimmerfold\n"
               "Comment=Move and resize windows with modifier keys\n"
               "Exec=%1\n"
               "Icon=glimmerfold\n"
               "Terminal=false\n"
               "X-GNOME-Autostart-enabled=true\n")
        .arg(quotedForExec(programPath()))
        .toUtf8();
}

// Returns an empty string on success, else why it failed.
QString writeAutostartEntry() {
    const QString path = autostartEntryPath();
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        return QStringLiteral("cannot create the directory %1").arg(QFileInfo(path).absolutePath());
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    file.write(autostartEntry());
    if (!file.commit()) {
        return file.errorString();
    }
    return {};
}

QString removeAutostartEntry() {
    QFile file(autostartEntryPath());
    if (!file.exists() || file.remove()) {
        return {};
    }
    return file.errorString();
}

}  // namespace

QString autostartEntryPath() {
    return configHome() + QStringLiteral("/autostart/glimmerfold.desktop");
}

void setLaunchAtLogin(bool enabled) {
    const QString error = enabled ? writeAutostartEntry() : removeAutostartEntry();
    if (error.isEmpty()) {
        return;
    }
    std::cout << (enabled ? "Failed to enable login item: " : "Failed to disable login item: ")
              << error.toStdString() << std::endl;
}

}  // namespace gf
