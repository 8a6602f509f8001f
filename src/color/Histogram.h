// Counts a picture's colours in the coarse cells of the colour cube.
#pragma once

#include "ColorTable.h"

/// Pixels in each cell of the colour cube, [red >> 3][green >> 3][blue >> 3]; 131072 bytes.
using Histogram = std::uint32_t[32][32][32];

/// The histogram of a picture with transparency, and the colour to blend with. Owns nothing.
struct HistInfo {
    Histogram* histogram;
    PackedColor transColor; ///< the colour that partly opaque pixels are laid over
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

/// The same for planes 0 to 3, of which the fourth is opacity. Fully transparent pixels are not
/// counted; partly opaque ones are laid over `info->transColor` first.
short CalcHistogram3DWithTransparency(const Rect* area, std::int32_t rowBytes,
                                      const std::uint8_t* data, HistInfo* info);
