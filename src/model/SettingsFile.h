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
    // Reads the file at once and writes nothing. A file that cannot be opened reads as empty, so
    // every preference takes its default; in a file with malformed lines, what did parse is read.
    explicit SettingsFile(QString path);
    ~SettingsFile();
    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    const QString& path() const { return path_; }

    // Whether the file holds a value at `key`, readable or not.
    bool contains(const QString& key) const;
    // One line on standard error saying what could not be read: the whole file, or its malformed
    // lines and the stored values of `unreadableKeys`. Nothing when everything was read.
    void reportReadProblems(const QStringList& unreadableKeys) const;

    // A boolean, or a number that is exactly 0 or 1.
    std::optional<bool> readBool(const QString& key) const;
    // A number, or a boolean (true reads as 1, false as 0).
    std::optional<double> readDouble(const QString& key) const;
    std::optional<QByteArray> readData(const QString& key) const;

    // Stores one value and syncs. A file that could not be read whole at start-up is first renamed
    // to "<path>.unreadable" so that its bytes survive; what did parse goes on into the new file. A
    // failed write is reported on standard error once, is retried with the next write, and never
    // throws.
    void write(const QString& key, const QVariant& value);

  private:
    static bool isReachable(const QString& key);
    bool keepUnreadableFileAside();
    void carryOverParsedValues();
    void reopen();
    void reportWriteFailure();
    QVariant storedValue(const QString& key) const;

    QString path_;
    std::unique_ptr<QSettings> settings_;
    bool readFailed_ = false;
    bool hasMalformedLines_ = false;
    bool mustKeepFileAside_ = false;
    bool writeFailureReported_ = false;
    // Values whose write failed, written again with the next assignment.
    QMap<QString, QVariant> unsaved_;
};

}  // namespace gf
