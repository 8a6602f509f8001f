// Maps true colours to palette indices through an inverse map, with error diffusion that carries
// what each pixel is off by on to its neighbours.
#pragma once

#include "ColorTable.h"

/// Maps the rows of a band to palette indices.
///
/// @param src         rows of interleaved red, green, blue
/// @param dst         one index a pixel; must not overlap src
/// @param rows        rows in the band; 0 or less does nothing
/// @param columns     pixels in a row, 0..32767
/// @param firstRow    the picture's row of the band's first row, 0..32767: direction and error
///                    rows follow it
/// @param srcRowBytes bytes from one row of src to the next
/// @param dstRowBytes bytes from one row of dst to the next
/// @param table       the palette
/// @param inverse     its map from BuildInverse
/// @param errors      2 rows of columns + 2 pixels of 3 values; cleared by the caller before the
///                    first band and left alone between bands
void DiffuseColorNoTransparency(const std::uint8_t* src, std::uint8_t* dst, short rows,
                                short columns, short firstRow, std::int32_t srcRowBytes,
                                std::int32_t dstRowBytes, const RGBLookUpTable* table,
                                const std::uint8_t* inverse, std::int16_t* errors);

/// The same for rows of red, green, blue and opacity. Fully transparent pixels get the index and
/// take no part in the diffusion; partly transparent ones lie over the transparent colour.
///
/// @param transColor the transparent colour
/// @param transIndex its index in the low byte
void DiffuseColorWithTransparency(const std::uint8_t* src, std::uint8_t* dst, short rows,
                                  short columns, short firstRow, std::int32_t srcRowBytes,
                                  std::int32_t dstRowBytes, const RGBLookUpTable* table,
                                  const std::uint8_t* inverse, std::int16_t* errors,
                                  PackedColor transColor, std::int32_t transIndex);

// Below: the steps of the above, declared for their tests.

/// A channel corrected by three quarters of the error that reached it, 0..255.
short DiffuseIn(std::uint8_t value, std::int16_t error);

/// Hands on an error: a quarter to the pixel below and behind, half of the rest each to the pixel
/// below and to the next one in the scan. The cells wrap.
void DiffuseOut(std::int16_t error, std::int16_t* behindBelow, std::int16_t* below,
                std::int16_t* ahead);
