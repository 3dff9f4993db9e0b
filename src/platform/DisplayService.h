#pragma once

#include <vector>

#include "platform/DisplayInfo.h"

namespace gf {

class DisplayService {
public:
    virtual ~DisplayService() = default;

    // The displays, primary first, read afresh on every call. Empty when none
    // can be found.
    virtual std::vector<DisplayInfo> displays() = 0;
};

}  // namespace gf
