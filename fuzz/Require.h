// What must hold for every input.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program when it does not hold, so that a fuzzer keeps the input.
inline void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}
