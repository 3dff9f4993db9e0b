#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <optional>

namespace gf {

// One release announced by a feed.
struct AppcastItem {
    QString version;             // the build version, compared against ours
    QString shortVersionString;  // the version shown to people; the build version when absent
    QUrl downloadUrl;            // the enclosure
    QUrl releaseNotesUrl;        // may be empty
    QUrl pageUrl;                // the item's web page; may be empty
};

// Reads an RSS 2.0 release feed whose items carry Sparkle's version elements
// (or the same values as attributes of the enclosure) and picks the newest
// release. Items without a version or an enclosure URL are skipped.
class AppcastParser {
  public:
    struct Result {
        std::optional<AppcastItem> newest;
        QString error;  // set when newest is empty
    };

    static Result parse(const QByteArray& feed);
};

}  // namespace gf
