#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace gf {

// One of the modifier keys the user can combine into a gesture. Every key in the program is a
// row of allKeys(); no other value is ever made, so the name alone identifies a key. The table is
// the one place that ties a key's stored name to its bit in the engine's flags word and to the X
// modifier that the backend turns into that bit.
struct ModifierKey {
    std::string_view name;        // stable lower-case identifier, also used in the stored JSON
    std::string_view symbol;      // what the user sees: the key's name on Linux keyboards
    std::uint64_t eventFlag;      // bit of the engine's modifier-flags word while the key is down
    std::int64_t nativeModifier;  // the key's X modifier mask (0 where X has no bit for it)

    // The fixed table, in the order decoding searches it: fn, shift, control, option, command.
    // The names are those of the stored settings, which must stay readable.
    static constexpr const std::array<ModifierKey, 5>& allKeys();
    // The keys X reports, in the order pickers show them: Shift, Ctrl, Alt, Super. fn is not
    // among them: no X modifier carries it, so a combination holding it could never be pressed.
    static constexpr std::size_t availableCount = 4;
    static constexpr const std::array<ModifierKey, availableCount>& availableKeys();

    static constexpr const ModifierKey& fn() { return allKeys()[0]; }
    static constexpr const ModifierKey& shift() { return allKeys()[1]; }
    static constexpr const ModifierKey& control() { return allKeys()[2]; }
    static constexpr const ModifierKey& option() { return allKeys()[3]; }
    static constexpr const ModifierKey& command() { return allKeys()[4]; }

    // The table row whose name equals `name` exactly (case-sensitive), or nullptr.
    static constexpr const ModifierKey* withName(std::string_view name);

    constexpr bool isAvailable() const { return nativeModifier != 0; }

    friend constexpr bool operator==(const ModifierKey& a, const ModifierKey& b) {
        return a.name == b.name;
    }
};

namespace detail {

// X reports option as Mod1 (Alt) and command as Mod4 (Super); fn never reaches X.
inline constexpr std::array<ModifierKey, 5> modifierKeyTable{{
    {"fn", "Fn", 0x800000, 0},
    {"shift", "Shift", 0x20000, 0x1},
    {"control", "Ctrl", 0x40000, 0x4},
    {"option", "Alt", 0x80000, 0x8},
    {"command", "Super", 0x100000, 0x40},
}};

inline constexpr std::array<ModifierKey, ModifierKey::availableCount> availableModifierKeys{
    modifierKeyTable[1], modifierKeyTable[2], modifierKeyTable[3], modifierKeyTable[4]};

}  // namespace detail

constexpr const std::array<ModifierKey, 5>& ModifierKey::allKeys() {
    return detail::modifierKeyTable;
}

constexpr const std::array<ModifierKey, ModifierKey::availableCount>& ModifierKey::availableKeys() {
    return detail::availableModifierKeys;
}

constexpr const ModifierKey* ModifierKey::withName(std::string_view name) {
    for (const ModifierKey& key : allKeys()) {
        if (key.name == name) {
            return &key;
        }
    }
    return nullptr;
}

}  // namespace gf
