// How a picture in true colour is reduced to a palette.
#pragma once

#include "Color.h"

#include <optional>

namespace gif89 {

enum class Dithering : std::uint8_t {
    none,      ///< the nearest entry
    diffusion, ///< what a pixel is off by goes to its neighbours
    ordered,   ///< two entries in a regular pattern of 8 x 8 pixels
    blueNoise, ///< two entries in an irregular pattern without clusters, 64 x 64 pixels
};

struct Reduction {
    int entries = kMostEntries;        ///< at most so many, 2..256, the transparent one counted
    Palette kept = {};                 ///< colours to have in any case, first; fewer than `entries`
    std::optional<Palette> given = {}; ///< instead of the best palette; 1..256 entries
    Dithering dithering = Dithering::diffusion;
    int amount = 100; ///< of dithering, 0..100
};

/// An evenly spaced palette: six levels of each channel, blue fastest (216 entries).
Palette WebPalette();
/// The module's fixed palette: black, six levels of each channel from white down, and ramps of the
/// levels between them in red, green, blue and grey (256 entries).
Palette FixedPalette();
/// Greys from black to white, 2..256 entries.
Palette GreyPalette(int entries);

} // namespace gif89
