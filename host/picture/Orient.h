// Turns pictures that were stored lying or mirrored.
#pragma once

#include "Picture.h"

namespace gif89 {

/// Turns the picture upright as notes.orientation asks, channels included, and sets
/// notes.oriented; leaves it alone for 1 and for values that are none. Takes memory for one
/// further copy of the pixels or of a channel at a time. Throws Problem without it.
///
/// The orientation names the sides where the stored picture's first row and first column belong:
/// 1 top, left; 2 top, right; 3 bottom, right; 4 bottom, left; 5 left, top; 6 right, top;
/// 7 right, bottom; 8 left, bottom. Source: TIFF 6.0, tag 274, which EXIF shares.
void TurnUpright(Picture& picture);

} // namespace gif89
