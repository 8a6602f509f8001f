// What pixels are mapped to.
#pragma once

#include "Color.h"

namespace gif89 {

/// A palette to map pixels to.
struct Target {
    const Palette& palette; ///< 1..256 entries, one of them visible
    int hidden = -1; ///< the entry of transparent pixels, which no other pixel gets; -1: none
};

} // namespace gif89
