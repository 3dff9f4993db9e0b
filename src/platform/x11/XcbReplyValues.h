#pragma once

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/Rect.h"

namespace gf {

// Asks for the first `length` 32-bit units of a window's property.
inline xcb_get_property_cookie_t requestProperty(xcb_connection_t* connection, xcb_window_t window,
                                                 xcb_atom_t property, xcb_atom_t type,
                                                 std::uint32_t length) {
    return xcb_get_property(connection, 0, window, property, type, 0, length);
}

// The 32-bit values of a property; empty when it is missing, was not answered or holds values of
// another size.
inline std::vector<std::uint32_t> propertyValues32(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    const auto* data = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    const auto count = static_cast<std::size_t>(xcb_get_property_value_length(reply)) / 4;
    return {data, data + count};
}

// A window's rectangle with its X border, in its parent's coordinates.
inline Rect outerRectangle(const xcb_get_geometry_reply_t& geometry) {
    const double border = geometry.border_width;
    return {static_cast<double>(geometry.x), static_cast<double>(geometry.y),
            geometry.width + 2 * border, geometry.height + 2 * border};
}

}  // namespace gf
