#include "model/JsonKind.h"

namespace gf {

QString jsonKindName(const QJsonValue& value) {
    switch (value.type()) {
        case QJsonValue::Null:
            return QStringLiteral("null");
        case QJsonValue::Bool:
            return QStringLiteral("a boolean");
        case QJsonValue::Double:
            return QStringLiteral("a number");
        case QJsonValue::String:
            return QStringLiteral("a string");
        case QJsonValue::Array:
            return QStringLiteral("an array");
        case QJsonValue::Object:
            return QStringLiteral("an object");
        case QJsonValue::Undefined:
            break;
    }
    return QStringLiteral("nothing");
}

}  // namespace gf
