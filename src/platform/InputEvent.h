#pragma once

#include <cstdint>

#include "model/ModifierKey.h"
#include "platform/Point.h"

namespace gf {

// The kinds of input the engine observes. The numbering is the engine's own and
// stays stable; the last two are notices that the stream was interrupted.
enum class InputEventType : std::uint32_t {
    mouseMoved = 5,
    leftMouseDragged = 6,
    cancelKeyPressed = 10,  // Escape, delivered only while the stream captures it
    flagsChanged = 12,
    tapDisabledByTimeout = 0xFFFFFFFEu,
    tapDisabledByUserInput = 0xFFFFFFFFu,
};

// Modifier bits of the flags word, shared by every event and by the current
// keyboard state, as the modifier key table assigns them. Other bits may be set
// and mean nothing to the engine.
namespace ModifierFlag {
inline constexpr std::uint64_t shift = ModifierKey::shift().eventFlag;
inline constexpr std::uint64_t control = ModifierKey::control().eventFlag;
inline constexpr std::uint64_t option = ModifierKey::option().eventFlag;
inline constexpr std::uint64_t command = ModifierKey::command().eventFlag;
inline constexpr std::uint64_t fn = ModifierKey::fn().eventFlag;
}  // namespace ModifierFlag

struct InputEvent {
    InputEventType type = InputEventType::mouseMoved;
    std::uint64_t flags = 0;  // modifier bits held when the event happened
    Point location;           // pointer position, global top-left coordinates

    friend bool operator==(const InputEvent&, const InputEvent&) = default;
};

}  // namespace gf
