#include "model/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <cstdio>

namespace gf {

namespace {

enum class ValueKind { other, boolean, number };

struct ClassifiedValue {
    ValueKind kind = ValueKind::other;
    bool boolean = false;
    double number = 0.0;
};

ClassifiedValue classifyText(const QString& text) {
    if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
        return {ValueKind::boolean, true, 0.0};
    }
    if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
        return {ValueKind::boolean, false, 0.0};
    }
    QLocale cLocale = QLocale::c();
    cLocale.setNumberOptions(QLocale::RejectGroupSeparator);
    bool isNumber = false;
    const double number = cLocale.toDouble(text, &isNumber);
    if (isNumber) {
        return {ValueKind::number, false, number};
    }
    return {};
}

ClassifiedValue classify(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Bool:
            return {ValueKind::boolean, value.toBool(), 0.0};
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Double:
        case QMetaType::Float:
            return {ValueKind::number, false, value.toDouble()};
        case QMetaType::QString:
            return classifyText(value.toString());
        default:
            return {};
    }
}

void printLine(const QString& line) {
    std::fprintf(stderr, "glimmerfold: %s\n", line.toLocal8Bit().constData());
    std::fflush(stderr);
}

QString readProblem(const QString& path) {
    if (QFileInfo(path).isDir()) {
        return QStringLiteral("it is a directory");
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return file.errorString();
    }
    return QStringLiteral("it could not be read");
}

QString writeProblem(const QString& path) {
    const QFileInfo file(path);
    if (file.isDir()) {
        return QStringLiteral("it is a directory");
    }
    const QFileInfo directory(file.absolutePath());
    if (!directory.exists()) {
        return QStringLiteral("the folder %1 cannot be created").arg(directory.filePath());
    }
    if (!directory.isDir()) {
        return QStringLiteral("%1 is not a folder").arg(directory.filePath());
    }
    if (!directory.isWritable()) {
        return QStringLiteral("the folder %1 is not writable").arg(directory.filePath());
    }
    if (file.exists() && !file.isWritable()) {
        return QStringLiteral("the file is not writable");
    }
    return QStringLiteral("the file could not be saved");
}

std::unique_ptr<QSettings> openSettings(const QString& path) {
    auto settings = std::make_unique<QSettings>(path, QSettings::IniFormat);
    // Writes go to a temporary file that replaces the old one, so a crash never leaves half a file.
    settings->setAtomicSyncRequired(true);
    return settings;
}

}  // namespace

SettingsFile::SettingsFile(QString path) : path_(std::move(path)), settings_(openSettings(path_)) {
    // QSettings parses sections lazily; listing every key surfaces a malformed line now rather
    // than at some later read.
    const QStringList keys = settings_->allKeys();
    readFailed_ = settings_->status() == QSettings::AccessError;
    hasMalformedLines_ = settings_->status() == QSettings::FormatError ||
                         !std::all_of(keys.cbegin(), keys.cend(), isReachable);
    mustKeepFileAside_ = (readFailed_ || hasMalformedLines_) && QFileInfo(path_).isFile();
}

SettingsFile::~SettingsFile() = default;

// A key parsed under a "[]" header ("/name") or written with a slash at its end ("name/") is
// listed but never read: QSettings cleans the slashes out of the name on every lookup. Such lines
// count as malformed, since a rewrite could move a value that was not used at start-up to where the
// next start reads it; and they are not carried into a new file, where setting them would land on
// the cleaned-up name and overwrite that preference.
bool SettingsFile::isReachable(const QString& key) {
    const QChar slash = QLatin1Char('/');
    return !key.startsWith(slash) && !key.endsWith(slash) && !key.contains(QStringLiteral("//"));
}

bool SettingsFile::contains(const QString& key) const {
    return !readFailed_ && settings_->contains(key);
}

void SettingsFile::reportReadProblems(const QStringList& unreadableKeys) const {
    if (readFailed_) {
        printLine(QStringLiteral("cannot read settings file %1: %2; using defaults")
                      .arg(path_, readProblem(path_)));
        return;
    }
    QStringList parts;
    if (hasMalformedLines_) {
        parts << QStringLiteral("malformed lines");
    }
    if (!unreadableKeys.isEmpty()) {
        parts << QStringLiteral("the values of %1").arg(unreadableKeys.join(QStringLiteral(", ")));
    }
    if (!parts.isEmpty()) {
        printLine(QStringLiteral("cannot read part of settings file %1 (%2); using defaults for it")
                      .arg(path_, parts.join(QStringLiteral(" and "))));
    }
}

QVariant SettingsFile::storedValue(const QString& key) const {
    if (!contains(key)) {
        return {};
    }
    return settings_->value(key);
}

std::optional<bool> SettingsFile::readBool(const QString& key) const {
    const ClassifiedValue value = classify(storedValue(key));
    switch (value.kind) {
        case ValueKind::boolean:
            return value.boolean;
        case ValueKind::number:
            if (value.number == 0.0 || value.number == 1.0) {
                return value.number == 1.0;
            }
            return std::nullopt;
        case ValueKind::other:
            break;
    }
    return std::nullopt;
}

std::optional<double> SettingsFile::readDouble(const QString& key) const {
    const ClassifiedValue value = classify(storedValue(key));
    switch (value.kind) {
        case ValueKind::number:
            return value.number;
        case ValueKind::boolean:
            return value.boolean ? 1.0 : 0.0;
        case ValueKind::other:
            break;
    }
    return std::nullopt;
}

std::optional<QByteArray> SettingsFile::readData(const QString& key) const {
    const QVariant value = storedValue(key);
    if (value.typeId() != QMetaType::QByteArray) {
        return std::nullopt;
    }
    return value.toByteArray();
}

bool SettingsFile::keepUnreadableFileAside() {
    const QString base = path_ + QStringLiteral(".unreadable");
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QString target = attempt == 0 ? base : base + QStringLiteral(".%1").arg(attempt);
        if (QFileInfo::exists(target)) {
            continue;
        }
        if (QFile::rename(path_, target)) {
            printLine(QStringLiteral("kept the unreadable settings file as %1").arg(target));
            return true;
        }
        return false;
    }
    return false;
}

// What parsed in the file being set aside belongs in the new one, unless this run assigned it anew.
// It waits with the unsaved values, so that a failed write does not lose it either.
void SettingsFile::carryOverParsedValues() {
    if (readFailed_) {
        return;
    }
    const QStringList keys = settings_->allKeys();
    for (const QString& key : keys) {
        if (isReachable(key) && !unsaved_.contains(key)) {
            unsaved_.insert(key, settings_->value(key));
        }
    }
}

// QSettings remembers its first error for good and keeps what it parsed from a broken file; a
// fresh instance starts from what is on disk now.
void SettingsFile::reopen() {
    settings_.reset();
    settings_ = openSettings(path_);
}

void SettingsFile::reportWriteFailure() {
    if (writeFailureReported_) {
        return;
    }
    writeFailureReported_ = true;
    printLine(QStringLiteral("cannot write settings file %1: %2; changes will not be saved")
                  .arg(path_, writeProblem(path_)));
}

void SettingsFile::write(const QString& key, const QVariant& value) {
    unsaved_.insert(key, value);
    if (mustKeepFileAside_) {
        carryOverParsedValues();
        if (!keepUnreadableFileAside()) {
            reportWriteFailure();
            return;
        }
        mustKeepFileAside_ = false;
        readFailed_ = false;
        hasMalformedLines_ = false;
        reopen();
    } else if (settings_->status() != QSettings::NoError) {
        reopen();
    }

    for (auto it = unsaved_.cbegin(); it != unsaved_.cend(); ++it) {
        settings_->setValue(it.key(), it.value());
    }
    settings_->sync();
    if (settings_->status() == QSettings::NoError) {
        unsaved_.clear();
    } else {
        reportWriteFailure();
    }
}

}  // namespace gf
