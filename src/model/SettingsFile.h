#pragma once

#include <QByteArray>
#include <QMap>
#include <QSettings>
#include <QString>
#include <QVariant>
#include <memory>
#include <optional>

namespace gf {

// The INI file behind Settings. Reads values with the conversions the preferences allow, writes
// each assignment through at once (atomically, via QSettings' save-file), keeps keys it does not
// know, and never destroys a file it could not read.
//
// What counts as which kind of stored value, since an INI file holds only text:
// - a boolean is the text true or false in any letter case (QSettings writes true/false);
// - a number is C-locale decimal notation, with an optional sign and exponent, or nan/inf, as
//   QSettings writes doubles; hexadecimal, digit grouping and anything else is text;
// - byte data is a value written as @ByteArray(...); plain text is never byte data.
// Values QSettings stored with their type (@Variant) keep that type.
class SettingsFile {
  public:
    // Reads the file at once. A file that cannot be read or parsed gets one line on standard error
    // and the whole file then reads as empty, so every preference takes its default.
    explicit SettingsFile(QString path);
    ~SettingsFile();
    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    const QString& path() const { return path_; }

    // A boolean, or a number that is exactly 0 or 1.
    std::optional<bool> readBool(const QString& key) const;
    // A number, or a boolean (true reads as 1, false as 0).
    std::optional<double> readDouble(const QString& key) const;
    std::optional<QByteArray> readData(const QString& key) const;

    // Stores one value and syncs. A file that could not be read at start-up is first renamed to
    // "<path>.unreadable" so that its contents survive. A failed write is reported on standard
    // error once, is retried with the next write, and never throws.
    void write(const QString& key, const QVariant& value);

  private:
    void reportUnreadableFile();
    bool keepUnreadableFileAside();
    void reopen();
    void reportWriteFailure();
    QVariant storedValue(const QString& key) const;

    QString path_;
    std::unique_ptr<QSettings> settings_;
    bool readFailed_ = false;
    bool mustKeepFileAside_ = false;
    bool writeFailureReported_ = false;
    // Values whose write failed, written again with the next assignment.
    QMap<QString, QVariant> unsaved_;
};

}  // namespace gf
