// The inverse colour map, by plain sweeps and by looking at every distance.
#pragma once

#include "ColorTable.h"

#include <string>
#include <vector>

/// 32768 palette indices, red cell slowest, built by sweeps along green, red and blue.
std::vector<std::uint8_t> PlainInverseMap(const RGBLookUpTable& table, int colors);

/// Compares each cell of a map with the distances to all palette entries. Empty, or a sentence
/// about the first cell whose index is not among the nearest.
std::string FindFarCell(const RGBLookUpTable& table, int colors,
                        const std::vector<std::uint8_t>& inverse);
