// Pictures whose colours fit a colour table.
#pragma once

#include "Picture.h"

#include <optional>

namespace gif89 {

constexpr int kMostColors = 256;

/// The colours of opaque pixels in the order in which they appear.
struct FewColors {
    RGBLookUpTable table = {};
    int count = 0;
    bool transparent = false; ///< some pixels are transparent, which takes an entry more
    int Entries() const { return count + (transparent ? 1 : 0); }
};

/// None when an RGB picture's colours are too many for one table, or some pixel is neither opaque
/// nor fully transparent.
std::optional<FewColors> FindFewColors(const Picture& picture);

/// Makes the RGB picture that those colours were found in an indexed one, in place. Transparent
/// pixels take the entry behind the others, black, and channel "Transparency" hides them; further
/// channels follow. Throws Problem without memory.
void MakeIndexed(Picture& picture, const FewColors& few);

/// True when the module can write the picture with an exact palette, which has white, black and the
/// colours of transparent pixels as well, and their entry beside them.
bool FitsExactPalette(const Picture& picture);

} // namespace gif89
