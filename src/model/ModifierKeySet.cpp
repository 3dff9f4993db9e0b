#include "model/ModifierKeySet.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include "model/JsonKind.h"

namespace gf {

namespace {

const QString kKeysMember = QStringLiteral("keys");
const QString kNameMember = QStringLiteral("name");

std::optional<ModifierKeySet> fail(QString* error, const QString& message) {
    if (error != nullptr) {
        *error = message;
    }
    return std::nullopt;
}

QString elementPath(qsizetype index) {
    return QStringLiteral("keys[%1]").arg(index);
}

}  // namespace

ModifierKeySet::ModifierKeySet(std::initializer_list<ModifierKey> keys) {
    for (const ModifierKey& key : keys) {
        insert(key);
    }
}

std::optional<std::uint8_t> ModifierKeySet::bitOf(std::string_view name) {
    const auto& table = ModifierKey::allKeys();
    for (std::size_t index = 0; index < table.size(); ++index) {
        if (table[index].name == name) {
            return static_cast<std::uint8_t>(1U << index);
        }
    }
    return std::nullopt;
}

std::vector<ModifierKey> ModifierKeySet::keys() const {
    std::vector<ModifierKey> members;
    const auto& table = ModifierKey::allKeys();
    for (std::size_t index = 0; index < table.size(); ++index) {
        if ((bits_ & (1U << index)) != 0) {
            members.push_back(table[index]);
        }
    }
    return members;
}

bool ModifierKeySet::contains(const ModifierKey& key) const {
    return contains(key.name);
}

bool ModifierKeySet::contains(std::string_view name) const {
    const auto bit = bitOf(name);
    return bit && (bits_ & *bit) != 0;
}

// A key X never reports would make the combination impossible to hold.
void ModifierKeySet::insert(const ModifierKey& key) {
    if (!key.isAvailable()) {
        return;
    }
    if (const auto bit = bitOf(key.name)) {
        bits_ |= *bit;
    }
}

void ModifierKeySet::remove(const ModifierKey& key) {
    if (const auto bit = bitOf(key.name)) {
        bits_ &= static_cast<std::uint8_t>(~*bit);
    }
}

bool ModifierKeySet::isEmpty() const {
    return bits_ == 0;
}

bool ModifierKeySet::matches(std::uint64_t flags) const {
    const auto& table = ModifierKey::allKeys();
    for (std::size_t index = 0; index < table.size(); ++index) {
        const bool isMember = (bits_ & (1U << index)) != 0;
        if (isMember && (table[index].eventFlag & ~flags) != 0) {
            return false;
        }
    }
    return true;
}

QByteArray ModifierKeySet::toJson() const {
    QJsonArray members;
    for (const ModifierKey& key : keys()) {
        members.append(QJsonObject{
            {kNameMember, QString::fromUtf8(key.name.data(), qsizetype(key.name.size()))}});
    }
    return QJsonDocument(QJsonObject{{kKeysMember, members}}).toJson(QJsonDocument::Compact);
}

std::optional<ModifierKeySet> ModifierKeySet::fromJson(const QByteArray& json, QString* error) {
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        return fail(error, QStringLiteral("The data is not valid JSON: %1 at offset %2.")
                               .arg(parseError.errorString())
                               .arg(parseError.offset));
    }
    if (!document.isObject()) {
        return fail(error, QStringLiteral("Expected an object but found %1.")
                               .arg(jsonKindName(document.isArray() ? QJsonValue(document.array())
                                                                    : QJsonValue())));
    }
    const QJsonValue keysValue = document.object().value(kKeysMember);
    if (keysValue.isUndefined()) {
        return fail(error, QStringLiteral("No value associated with key \"keys\"."));
    }
    if (!keysValue.isArray()) {
        return fail(
            error,
            QStringLiteral("Expected an array at keys but found %1.").arg(jsonKindName(keysValue)));
    }

    ModifierKeySet set;
    const QJsonArray elements = keysValue.toArray();
    for (qsizetype index = 0; index < elements.size(); ++index) {
        const QJsonValue element = elements.at(index);
        if (!element.isObject()) {
            return fail(error, QStringLiteral("Expected an object at %1 but found %2.")
                                   .arg(elementPath(index), jsonKindName(element)));
        }
        const QJsonValue nameValue = element.toObject().value(kNameMember);
        if (nameValue.isUndefined()) {
            return fail(error, QStringLiteral("No value associated with key \"name\" at %1.")
                                   .arg(elementPath(index)));
        }
        if (!nameValue.isString()) {
            return fail(error, QStringLiteral("Expected a string at %1.name but found %2.")
                                   .arg(elementPath(index), jsonKindName(nameValue)));
        }
        const QString name = nameValue.toString();
        const ModifierKey* key = ModifierKey::withName(name.toStdString());
        if (key == nullptr) {
            return fail(error, QStringLiteral("Unknown modifier key: ") + name);
        }
        set.insert(*key);
    }
    return set;
}

}  // namespace gf
