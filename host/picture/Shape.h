// Brings a picture to the shape in which it is exported: without a loss through its own colours
// where they fit a colour table, else in true colour.
#pragma once

#include "Picture.h"

namespace gif89 {

/// Which way a picture goes through the module.
enum class Way : std::uint8_t {
    natural, ///< indexed when nothing is lost by it, else RGB
    rgb,     ///< the colours are reduced
    indexed, ///< the picture's own table
};

struct Shaping {
    Way way = Way::natural;
    int alphaThreshold = 0; ///< 1..255: opacity below it becomes 0, all other 255; 0 keeps it
    bool opaque = false;    ///< a picture with transparency is laid over `matte`
    RGBtuple matte = {0, 255, 255, 255};
    int colors = 256; ///< natural: an indexed picture that uses more goes the RGB way, 2..256
};

/// True when shaping changes pixels, so that a comparison needs a copy made before.
bool ShapingLoses(const Picture& picture, const Shaping& how);

/// Shapes the picture in place. Throws Problem (kUsage) when Way::indexed is asked of a picture
/// that does not fit.
void Shape(Picture& picture, const Shaping& how);

/// True for indexed pictures and for those that MakeIndexed makes one of.
bool FitsTable(const Picture& picture);

/// How many entries of its table an indexed picture's pixels use.
int UsedEntries(const Picture& picture);

/// Makes an RGB picture an indexed one when that loses nothing: every pixel is opaque or fully
/// transparent and there are at most 256 colours, 255 beside transparent pixels. The table has
/// them in order of first appearance; transparent pixels take one entry more, black, and channel
/// "Transparency" hides them. False, with the picture as it was, when it does not fit; indexed
/// pictures stay as they are.
bool MakeIndexed(Picture& picture);

} // namespace gif89
