#pragma once

#include <string>
#include <vector>

#include "BenchResults.h"
#include "Goals.h"

namespace gf::bench {

// The tables for people (results.md) and the same numbers for programs (results.json).
std::string markdownReport(const BenchResults& results);
std::string jsonReport(const BenchResults& results);

}  // namespace gf::bench
