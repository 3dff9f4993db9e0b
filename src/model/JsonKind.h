#pragma once

#include <QJsonValue>
#include <QString>

namespace gf {

// "a string", "an array", ... for decoding errors that say what was found instead.
QString jsonKindName(const QJsonValue& value);

}  // namespace gf
