// Artwork in PNG files made into PICT resources.
#pragma once

#include "Bytes.h"
#include "SourceError.h"

namespace gif89 {

/// A version 2 picture of one packed 8-bit pixel map, with the frame in points and as many pixels
/// a point as the artwork has. Throws SourceError with `place` when the file is missing, is no
/// 8-bit PNG, has see-through pixels or more than 256 colours, or when its size is not 1 to 8 times
/// the frame's.
Bytes ConvertPicture(const std::string& path, const Rect& frame, const Place& place);

} // namespace gif89
