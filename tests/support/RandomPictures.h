// Seeded pictures and palettes for tests and benchmarks; the same seed gives the same bytes on
// every machine.
#pragma once

#include "ColorTable.h"

#include <cstdint>
#include <vector>

enum class PictureKind {
    photo,     ///< smooth gradients with texture; opacity fades between 0 and 255
    flat,      ///< one colour and one opacity
    fewColors, ///< blocks of at most 16 colours; opacity 0 or 255
    noise,     ///< every byte random; a quarter of the pixels transparent, a quarter opaque
};
inline constexpr PictureKind kPictureKinds[] = {PictureKind::photo, PictureKind::flat,
                                                PictureKind::fewColors, PictureKind::noise};

/// rows x columns pixels without padding; 3 planes are RGB, 4 have opacity behind.
std::vector<std::uint8_t> RandomPixels(PictureKind kind, int rows, int columns, int planes,
                                       std::uint32_t seed);

/// A palette of `colors` random entries, black beyond them.
RGBLookUpTable RandomTable(int colors, std::uint32_t seed);

/// The first `count` entries of a palette, packed.
std::vector<PackedColor> TableColors(const RGBLookUpTable& table, int count = 256);

/// The same rows with `padding` bytes of 0xA5 behind each.
std::vector<std::uint8_t> PadRows(const std::vector<std::uint8_t>& rows, int rowBytes, int padding);
