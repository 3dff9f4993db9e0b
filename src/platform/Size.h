#pragma once

namespace gf {

struct Size {
    double width = 0;
    double height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

}  // namespace gf
