// Decodes arbitrary bytes as a stored modifier set, as Settings does for moveModifiers,
// resizeModifiers and autoRaiseModifiers.
#include <cstddef>
#include <cstdint>

#include "FuzzCheck.h"
#include "model/ModifierKeySet.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using gf::fuzz::check;
    const QByteArray json(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QString error;
    const auto set = gf::ModifierKeySet::fromJson(json, &error);
    if (!set) {
        check(!error.isEmpty(), "a rejected set says why");
        return 0;
    }
    // What was decoded is stored again on the next assignment; it must read back the same.
    const auto again = gf::ModifierKeySet::fromJson(set->toJson());
    check(again.has_value() && *again == *set, "an encoded set decodes to itself");
    for (const gf::ModifierKey& key : set->keys()) {
        check(set->contains(key), "a set contains the keys it lists");
    }
    check(set->keys().empty() == set->isEmpty(), "an empty set lists no keys");
    return 0;
}
