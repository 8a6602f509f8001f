// The inverse colour map, by plain sweeps.
#pragma once

#include "ColorTable.h"

#include <vector>

/// 32768 palette indices, red cell slowest, built by sweeps along green, red and blue.
std::vector<std::uint8_t> PlainInverseMap(const RGBLookUpTable& table, int colors);
