#include "model/IgnoreListCoding.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include "model/JsonKind.h"

namespace gf {

namespace {

const QString kBundleIdentifierMember = QStringLiteral("bundleIdentifier");
const QString kAppNameMember = QStringLiteral("appName");

std::optional<std::vector<IgnoreListEntry>> fail(QString* error, const QString& message) {
    if (error != nullptr) {
        *error = message;
    }
    return std::nullopt;
}

// The string member `member` of the element at `index`, or the reason it cannot be read.
std::optional<std::string> readStringMember(const QJsonObject& object, const QString& member,
                                            qsizetype index, QString* error) {
    const QJsonValue value = object.value(member);
    QString problem;
    if (value.isUndefined()) {
        problem =
            QStringLiteral("No value associated with key \"%1\" at [%2].").arg(member).arg(index);
    } else if (!value.isString()) {
        problem = QStringLiteral("Expected a string at [%1].%2 but found %3.")
                      .arg(index)
                      .arg(member, jsonKindName(value));
    } else {
        return value.toString().toStdString();
    }
    if (error != nullptr) {
        *error = problem;
    }
    return std::nullopt;
}

}  // namespace

QByteArray IgnoreListCoding::encode(const std::vector<IgnoreListEntry>& entries) {
    QJsonArray array;
    for (const IgnoreListEntry& entry : entries) {
        array.append(QJsonObject{
            {kBundleIdentifierMember, QString::fromStdString(entry.bundleIdentifier)},
            {kAppNameMember, QString::fromStdString(entry.appName)},
        });
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<std::vector<IgnoreListEntry>> IgnoreListCoding::decode(const QByteArray& json,
                                                                     QString* error) {
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        return fail(error, QStringLiteral("The data is not valid JSON: %1 at offset %2.")
                               .arg(parseError.errorString())
                               .arg(parseError.offset));
    }
    if (!document.isArray()) {
        return fail(error, QStringLiteral("Expected an array but found an object."));
    }

    std::vector<IgnoreListEntry> entries;
    const QJsonArray array = document.array();
    entries.reserve(std::size_t(array.size()));
    for (qsizetype index = 0; index < array.size(); ++index) {
        const QJsonValue element = array.at(index);
        if (!element.isObject()) {
            return fail(error, QStringLiteral("Expected an object at [%1] but found %2.")
                                   .arg(index)
                                   .arg(jsonKindName(element)));
        }
        const QJsonObject object = element.toObject();
        auto bundleIdentifier = readStringMember(object, kBundleIdentifierMember, index, error);
        if (!bundleIdentifier) {
            return std::nullopt;
        }
        auto appName = readStringMember(object, kAppNameMember, index, error);
        if (!appName) {
            return std::nullopt;
        }
        entries.push_back({std::move(*bundleIdentifier), std::move(*appName)});
    }
    return entries;
}

}  // namespace gf
