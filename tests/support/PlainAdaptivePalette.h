// Colour histogram and median cut, written down the plain way.
#pragma once

#include "ColorTable.h"

#include <cstdlib>
#include <span>
#include <vector>

/// The colour of a pixel of red, green, blue, opacity over another colour, by division.
inline RGBtuple PlainOver(const std::uint8_t* pixel, RGBtuple below) {
    const auto mix = [pixel](int color, int under) {
        const int part = (2 * std::abs(color - under) * pixel[3] + 255) / 510;
        return static_cast<std::uint8_t>(color > under ? under + part : under - part);
    };
    return {0, mix(pixel[0], below.red), mix(pixel[1], below.green), mix(pixel[2], below.blue)};
}

/// 32768 counts of interleaved pixels of 3 or 4 planes, red cell slowest.
std::vector<std::uint32_t> PlainHistogram(std::span<const std::uint8_t> pixels, int planes,
                                          PackedColor below = 0);

/// White, the sorted colours of at most colors - 2 boxes, black.
RGBLookUpTable PlainAdaptivePalette(std::vector<std::uint32_t> histogram, int colors);
