#pragma once

#include <ostream>

#include "model/IgnoreListEntry.h"
#include "model/ModifierKeySet.h"

// Readable failure messages for the model's value types.
namespace gf {

inline void PrintTo(const ModifierKeySet& set, std::ostream* out) {
    *out << "{";
    const char* separator = "";
    for (const ModifierKey& key : set.keys()) {
        *out << separator << key.name;
        separator = ", ";
    }
    *out << "}";
}

inline void PrintTo(const IgnoreListEntry& entry, std::ostream* out) {
    *out << "{" << entry.bundleIdentifier << ", " << entry.appName << "}";
}

}  // namespace gf
