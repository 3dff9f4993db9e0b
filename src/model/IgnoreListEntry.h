#pragma once

#include <QMetaType>
#include <string>
#include <vector>

namespace gf {

// An application whose windows are never moved or resized. On X11 the identifier is the class part
// of the window's WM_CLASS, which is what stays stable across launches of the same application.
struct IgnoreListEntry {
    std::string bundleIdentifier;  // the key of the ignore test
    std::string appName;           // shown in the list only

    const std::string& id() const { return bundleIdentifier; }

    friend bool operator==(const IgnoreListEntry&, const IgnoreListEntry&) = default;
};

}  // namespace gf

Q_DECLARE_METATYPE(std::vector<gf::IgnoreListEntry>)
