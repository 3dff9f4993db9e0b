// Writes arbitrary bytes as the settings file and starts Settings on it, as the program does at
// start-up, then changes one setting as the user would.
#include <QDir>
#include <QFile>
#include <QMetaProperty>
#include <QTemporaryDir>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "FuzzCheck.h"
#include "model/Settings.h"

namespace {

using gf::fuzz::check;

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& contents) {
    QFile file(path);
    check(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the input file can be written");
    check(file.write(contents) == contents.size(), "the input file is written whole");
}

// Not-a-number counts as equal to itself here: what matters is that it survived.
bool sameValue(const QVariant& a, const QVariant& b) {
    if (a.typeId() == QMetaType::Double && b.typeId() == QMetaType::Double) {
        const double x = a.toDouble();
        const double y = b.toDouble();
        return x == y || (std::isnan(x) && std::isnan(y));
    }
    return a == b;
}

// Every preference of `later` equals that of `earlier`, except the one named `changed`.
void checkSamePreferences(const gf::Settings& earlier, const gf::Settings& later,
                          const char* changed) {
    const QMetaObject& meta = gf::Settings::staticMetaObject;
    for (int index = meta.propertyOffset(); index < meta.propertyCount(); ++index) {
        const QMetaProperty property = meta.property(index);
        if (qstrcmp(property.name(), changed) == 0) {
            continue;
        }
        if (!sameValue(property.read(&earlier), property.read(&later))) {
            std::fprintf(stderr, "preference %s changed\n", property.name());
            check(false, "an assignment keeps every other preference that was read");
        }
    }
}

QString workDirectory() {
    // A memory-backed directory where there is one: the fuzzer writes a few files per input.
    static QTemporaryDir directory(QDir("/dev/shm").exists() ? QStringLiteral("/dev/shm/gf-fuzz-XXXXXX")
                                                             : QDir::tempPath() + "/gf-fuzz-XXXXXX");
    check(directory.isValid(), "a temporary directory exists");
    return directory.path();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // QSettings caches what it read per file name within a process, so every input gets its own
    // names and each read comes from the disk.
    static unsigned long long inputNumber = 0;
    const QString base = workDirectory() + QStringLiteral("/%1").arg(++inputNumber);
    const QString path = base + QStringLiteral(".conf");
    const QString setAside = path + QStringLiteral(".unreadable");
    const QString copy = base + QStringLiteral("-copy.conf");
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    writeFile(path, input);

    {
        gf::Settings settings(path);
        check(contentsOf(path) == input, "start-up leaves the file as it was");
        check(!QFile::exists(setAside), "start-up sets nothing aside");

        settings.setShowInDock(!settings.showInDock());
        if (QFile::exists(setAside)) {
            check(contentsOf(setAside) == input, "a file set aside keeps its bytes");
        }

        // The next start reads what this one wrote.
        check(QFile::copy(path, copy), "the written file exists");
        const gf::Settings nextStart(copy);
        check(nextStart.showInDock() == settings.showInDock(), "the change is saved");
        checkSamePreferences(settings, nextStart, "showInDock");
    }
    QFile::remove(path);
    QFile::remove(setAside);
    QFile::remove(copy);
    return 0;
}
