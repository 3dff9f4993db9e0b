#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace gf {

// One of the modifier keys the user can combine into a gesture. Every key in the program is a
// row of allKeys(); no other value is ever made, so the name alone identifies a key.
struct ModifierKey {
    std::string_view name;        // stable lower-case identifier, also used in the stored JSON
    std::string_view symbol;      // what the user sees: the key's name on Linux keyboards
    std::uint64_t eventFlag;      // bit of the engine's modifier-flags word while the key is down
    std::int64_t nativeModifier;  // the key's X modifier mask (0 where X has no bit for it)

    // The fixed table, in the order decoding searches it: fn, shift, control, option, command.
    // The names are those of the stored settings, which must stay readable.
    static const std::array<ModifierKey, 5>& allKeys();
    // The keys X reports, in the order pickers show them: Shift, Ctrl, Alt, Super. fn is not
    // among them: no X modifier carries it, so a combination holding it could never be pressed.
    static constexpr std::size_t availableCount = 4;
    static const std::array<ModifierKey, availableCount>& availableKeys();

    static const ModifierKey& fn();
    static const ModifierKey& shift();
    static const ModifierKey& control();
    static const ModifierKey& option();
    static const ModifierKey& command();

    // The table row whose name equals `name` exactly (case-sensitive), or nullptr.
    static const ModifierKey* withName(std::string_view name);

    bool isAvailable() const { return nativeModifier != 0; }

    friend bool operator==(const ModifierKey& a, const ModifierKey& b) { return a.name == b.name; }
};

}  // namespace gf
