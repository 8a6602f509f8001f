// Counts a picture's colours in the coarse cells of the colour cube.
#pragma once

#include "ColorTable.h"

/// Pixels in each cell of the colour cube, [red >> 3][green >> 3][blue >> 3]; 131072 bytes.
using Histogram = std::uint32_t[32][32][32];

/// What the histogram pass of a picture with transparency works on. Owns nothing.
struct HistInfo {
    Histogram* histogram;
    PackedColor transColor; ///< the colour that partly transparent pixels lie over
};

/// Counts the pixels of a band; a band procedure for planes 0 to 2.
///
/// @param area      the band; no rows or no columns count nothing
/// @param rowBytes  bytes from one row of `data` to the next
/// @param data      interleaved red, green, blue
/// @param histogram cleared by the caller before the first band
/// @return 0
short CalcHistogram3DNoTransparency(const Rect* area, std::int32_t rowBytes,
                                    const std::uint8_t* data, std::uint32_t histogram[32][32][32]);

/// The same for planes 0 to 3, the fourth being opacity: fully transparent pixels are not counted,
/// partly transparent ones count with their colour over `info->transColor`.
short CalcHistogram3DWithTransparency(const Rect* area, std::int32_t rowBytes,
                                      const std::uint8_t* data, HistInfo* info);
