// Colour histogram and median cut, written down the plain way.
#pragma once

#include "ColorTable.h"

#include <span>
#include <vector>

/// The colour of a pixel of red, green, blue, opacity over another colour, in floating point.
RGBtuple PlainOver(const std::uint8_t* pixel, PackedColor below);

/// 32768 counts of interleaved pixels of 3 or 4 planes, red cell slowest.
std::vector<std::uint32_t> PlainHistogram(std::span<const std::uint8_t> pixels, int planes,
                                          PackedColor below = 0);

/// White, the sorted colours of at most colors - 2 boxes, black.
RGBLookUpTable PlainAdaptivePalette(const std::vector<std::uint32_t>& histogram, int colors);
