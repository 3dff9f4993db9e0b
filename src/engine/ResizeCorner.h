#pragma once

namespace gf {

// The window corner a resize drags; the opposite corner stays where it is.
enum class ResizeCorner { topLeft, topRight, bottomLeft, bottomRight };

}  // namespace gf
