// Error diffusion. Internal to this folder.
#pragma once

#include "NearestEntry.h"
#include "PaletteColors.h"
#include "Pixels.h"
#include "Target.h"

namespace gif89 {

/// As MapPixels does with Dithering::diffusion. Four rows run in one direction, the next four in
/// the other; errors are integers of 1/16 level.
///
/// A pixel leaves 0.9 of its error, half of that to the next pixel of the scan, a quarter each to
/// the pixel below and the one behind that; the error counts what reached the pixel. But only a
/// part of what reaches it moves the pixel when its entry is looked for: so an area keeps its mean
/// colour as if all of it did, with less than half of the noise. A pixel whose colour is in the
/// palette, or that is transparent, leaves nothing.
void DiffusePixels(const Pixels& pixels, const Target& target, int amount, std::uint8_t* indices);

/// What suits a palette.
struct DiffusionSettings {
    /// The part of the error that moves a pixel, in 1/65536, below 1/2. With few entries, which lie
    /// far apart, bands would show sooner than noise does.
    int strength;
    /// The largest error that reaches a pixel, in levels, 48..255: enough for what lies between two
    /// entries, no more, so that colours out of the palette's reach leave no trails.
    int mostError;
};
DiffusionSettings SettingsFor(const Target& target);

} // namespace gif89
