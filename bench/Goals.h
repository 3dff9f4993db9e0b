#pragma once

#include <string>
#include <vector>

#include "BenchResults.h"

namespace gf::bench {

// One goal the numbers are held against.
struct GoalCheck {
    std::string goal;
    std::string measured;
    bool met = false;
};

std::vector<GoalCheck> checkGoals(const BenchResults& results);

}  // namespace gf::bench
