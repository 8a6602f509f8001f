// From colours to entries: every pixel to the nearest one, or so that neighbours together come
// close to colours that no entry has.
#pragma once

#include "Pixels.h"
#include "Reduction.h"
#include "Target.h"

namespace gif89 {

/// Maps the pixels. A pixel whose colour is in the palette gets the lowest such entry, however it
/// is dithered.
///
/// @param pixels  without transparent ones when the target has no entry for them
/// @param amount  0..100: the strength of the dithering; 0 is as Dithering::none
/// @param indices rows x columns bytes, no padding; must not overlap the pixels
///
/// The bytes are the same on every machine. Takes the memory of NearestEntry and 8 bytes a column.
void MapPixels(const Pixels& pixels, const Target& target, Dithering dithering, int amount,
               std::uint8_t* indices);

} // namespace gif89
