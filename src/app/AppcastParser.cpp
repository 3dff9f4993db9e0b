#include "app/AppcastParser.h"

#include <QXmlStreamReader>
#include <vector>

#include "app/VersionComparison.h"

namespace gf {

namespace {

const QString sparkleNamespace =
    QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");

bool isSparkle(const QXmlStreamReader& xml, QStringView name) {
    return xml.namespaceUri() == sparkleNamespace && xml.name() == name;
}

QString sparkleAttribute(const QXmlStreamAttributes& attributes, const QString& name) {
    return attributes.value(sparkleNamespace, name).toString().trimmed();
}

QUrl absoluteUrl(const QString& text) {
    const QUrl url(text.trimmed(), QUrl::StrictMode);
    return url.isValid() && !url.isRelative() ? url : QUrl();
}

AppcastItem readItem(QXmlStreamReader& xml) {
    AppcastItem item;
    QString enclosureVersion;
    QString enclosureShortVersion;
    while (xml.readNextStartElement()) {
        if (isSparkle(xml, u"version")) {
            item.version = xml.readElementText().trimmed();
        } else if (isSparkle(xml, u"shortVersionString")) {
            item.shortVersionString = xml.readElementText().trimmed();
        } else if (isSparkle(xml, u"releaseNotesLink")) {
            item.releaseNotesUrl = absoluteUrl(xml.readElementText());
        } else if (xml.namespaceUri().isEmpty() && xml.name() == u"link") {
            item.pageUrl = absoluteUrl(xml.readElementText());
        } else if (xml.namespaceUri().isEmpty() && xml.name() == u"enclosure") {
            const QXmlStreamAttributes attributes = xml.attributes();
            item.downloadUrl = absoluteUrl(attributes.value(QStringLiteral("url")).toString());
            enclosureVersion = sparkleAttribute(attributes, QStringLiteral("version"));
            enclosureShortVersion =
                sparkleAttribute(attributes, QStringLiteral("shortVersionString"));
            xml.skipCurrentElement();
        } else {
            xml.skipCurrentElement();
        }
    }
    if (item.version.isEmpty()) {
        item.version = enclosureVersion;
    }
    if (item.shortVersionString.isEmpty()) {
        item.shortVersionString =
            enclosureShortVersion.isEmpty() ? item.version : enclosureShortVersion;
    }
    return item;
}

std::vector<AppcastItem> readItems(QXmlStreamReader& xml, QString* error) {
    std::vector<AppcastItem> items;
    if (!xml.readNextStartElement() || xml.name() != u"rss") {
        *error = QStringLiteral("the feed is not an RSS document");
        return items;
    }
    while (xml.readNextStartElement()) {
        if (xml.name() != u"channel") {
            xml.skipCurrentElement();
            continue;
        }
        while (xml.readNextStartElement()) {
            if (xml.name() == u"item") {
                items.push_back(readItem(xml));
            } else {
                xml.skipCurrentElement();
            }
        }
    }
    if (xml.hasError()) {
        *error = QStringLiteral("the feed is not well-formed XML (%1, line %2)")
                     .arg(xml.errorString())
                     .arg(xml.lineNumber());
        items.clear();
    }
    return items;
}

}  // namespace

AppcastParser::Result AppcastParser::parse(const QByteArray& feed) {
    QXmlStreamReader xml(feed);
    Result result;
    const std::vector<AppcastItem> items = readItems(xml, &result.error);
    if (!result.error.isEmpty()) {
        return result;
    }
    for (const AppcastItem& item : items) {
        if (item.version.isEmpty() || item.downloadUrl.isEmpty()) {
            continue;
        }
        if (!result.newest || compareVersions(item.version, result.newest->version) > 0) {
            result.newest = item;
        }
    }
    if (!result.newest) {
        result.error = items.empty()
                           ? QStringLiteral("the feed lists no releases")
                           : QStringLiteral("no release in the feed has a version and a download");
    }
    return result;
}

}  // namespace gf
