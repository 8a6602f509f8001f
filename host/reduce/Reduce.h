// Turns pictures in true colour into entries of a palette, at the best quality there is.
#pragma once

#include "Dither.h"

#include <memory>

namespace gif89 {

struct Reduced {
    Palette palette;                         ///< with the transparent entry, which is black
    int transparent = -1;                    ///< its number, -1 without transparent pixels
    bool exact = false;                      ///< every pixel has its own colour
    std::unique_ptr<std::uint8_t[]> indices; ///< rows x columns, no padding
};

/// Reduces a picture. The bytes are the same on every machine.
///
/// The picture's own colours in order of first appearance are the palette where there is room for
/// all; else exactly as many entries are found as there may be. A transparent entry comes last. A
/// given palette keeps its order and duplicates; of one with too many entries those that suit the
/// picture best are left.
///
/// Beside the indices this takes about 8 MB. Throws std::bad_alloc.
Reduced Reduce(const Pixels& pixels, const Reduction& how);

} // namespace gif89
