#pragma once

#include <cstdio>
#include <cstdlib>

namespace gf::fuzz {

// A broken promise of the code under test: says which, then aborts so that libFuzzer keeps the
// input that caused it.
inline void check(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "fuzz check failed: %s\n", promise);
        std::abort();
    }
}

}  // namespace gf::fuzz
