#include "model/ModifierKey.h"

namespace gf {

namespace {

// The X11 backend reports option as Mod1 (Alt) and command as Mod4 (Super); fn never reaches X.
constexpr std::array<ModifierKey, 5> kTable{{
    {"fn", "Fn", 0x800000, 0},
    {"shift", "Shift", 0x20000, 0x1},
    {"control", "Ctrl", 0x40000, 0x4},
    {"option", "Alt", 0x80000, 0x8},
    {"command", "Super", 0x100000, 0x40},
}};

constexpr std::array<ModifierKey, ModifierKey::availableCount> kAvailable{kTable[1], kTable[2],
                                                                          kTable[3], kTable[4]};

}  // namespace

const std::array<ModifierKey, 5>& ModifierKey::allKeys() {
    return kTable;
}

const std::array<ModifierKey, ModifierKey::availableCount>& ModifierKey::availableKeys() {
    return kAvailable;
}

const ModifierKey& ModifierKey::fn() {
    return kTable[0];
}

const ModifierKey& ModifierKey::shift() {
    return kTable[1];
}

const ModifierKey& ModifierKey::control() {
    return kTable[2];
}

const ModifierKey& ModifierKey::option() {
    return kTable[3];
}

const ModifierKey& ModifierKey::command() {
    return kTable[4];
}

const ModifierKey* ModifierKey::withName(std::string_view name) {
    for (const ModifierKey& key : kTable) {
        if (key.name == name) {
            return &key;
        }
    }
    return nullptr;
}

}  // namespace gf
