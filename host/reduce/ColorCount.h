// What colours a picture has and how often: exactly where they are few, else gathered in cells.
#pragma once

#include "Color.h"
#include "Pixels.h"

namespace gif89 {

/// Channels of points are in steps of 1/16 level, 0..4080.
constexpr int kStepsPerLevel = 16;

/// A colour, or the mean of close ones, and how much it counts.
struct ColorPoint {
    std::int16_t channels[3]; ///< red, green, blue in steps of 1/16 level
    std::uint32_t weight;     ///< of all points together less than 2^30
};

struct ColorCount {
    bool exact = false;       ///< every point is one colour of the picture
    bool transparent = false; ///< some pixel is transparent
    std::vector<ColorPoint>
        points; ///< exact: in order of first appearance; empty without an opaque pixel
};

/// Up to so many colours are told apart.
constexpr std::size_t kMostExactColors = 16384;

/// Counts the colours of the opaque pixels. Above kMostExactColors, a point is the mean of the
/// pixels in one of 64 x 64 x 64 cells. Takes 4 MB for the cells while it counts.
///
/// A pixel much like the one before it counts three times: in smooth areas the eye sees errors that
/// it overlooks among details.
ColorCount CountColorPoints(const Pixels& pixels);

} // namespace gif89
