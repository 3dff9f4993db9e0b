#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "model/ModifierKey.h"

namespace gf {

// The table gives each key's X modifier without including X headers; these keep it honest.
static_assert(ModifierKey::shift().nativeModifier == XCB_MOD_MASK_SHIFT);
static_assert(ModifierKey::control().nativeModifier == XCB_MOD_MASK_CONTROL);
static_assert(ModifierKey::option().nativeModifier == XCB_MOD_MASK_1);
static_assert(ModifierKey::command().nativeModifier == XCB_MOD_MASK_4);
static_assert(!ModifierKey::fn().isAvailable());

// The engine's flags word for an X modifier mask (core or XKB state): each key of the table whose
// X modifier is set contributes its flag. Lock, Num Lock and the other X modifiers add nothing.
constexpr std::uint64_t flagsFromModifierState(std::uint16_t state) {
    std::uint64_t flags = 0;
    for (const ModifierKey& key : ModifierKey::allKeys()) {
        if ((static_cast<std::int64_t>(state) & key.nativeModifier) != 0) {
            flags |= key.eventFlag;
        }
    }
    return flags;
}

}  // namespace gf
