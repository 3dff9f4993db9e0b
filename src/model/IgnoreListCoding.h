#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

#include "model/IgnoreListEntry.h"

namespace gf {

// The stored JSON form of the ignore list: an array of {"bundleIdentifier":...,"appName":...}
// objects in list order, written compact; an empty list is [].
class IgnoreListCoding {
  public:
    static QByteArray encode(const std::vector<IgnoreListEntry>& entries);

    // Fails as a whole unless the text is an array whose every element is an object with both
    // string members; other members are ignored. `error`, when given, receives the description.
    static std::optional<std::vector<IgnoreListEntry>> decode(const QByteArray& json,
                                                              QString* error = nullptr);
};

}  // namespace gf
