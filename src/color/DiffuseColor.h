// Maps true colours to palette indices through an inverse map, with error diffusion: the difference
// between a pixel and its palette entry is spread over the neighbouring pixels.
#pragma once

#include "ColorTable.h"

/// Maps the rows of a band to palette indices.
///
/// @param src         rows of interleaved red, green, blue
/// @param dst         one index a pixel; must not overlap src
/// @param rows        rows in the band; 0 or less does nothing
/// @param columns     pixels in a row, 0..32767
/// @param firstRow    row of the picture at which the band begins, 0..32767; it decides the
///                    direction of the scan and the use of the error rows
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

/// The same for rows of red, green, blue and opacity. Fully transparent pixels get the transparent
/// index and neither receive nor pass on errors. Partly opaque ones are laid over the transparent
/// colour.
///
/// @param transColor the transparent colour
/// @param transIndex the transparent index, in the low byte
void DiffuseColorWithTransparency(const std::uint8_t* src, std::uint8_t* dst, short rows,
                                  short columns, short firstRow, std::int32_t srcRowBytes,
                                  std::int32_t dstRowBytes, const RGBLookUpTable* table,
                                  const std::uint8_t* inverse, std::int16_t* errors,
                                  PackedColor transColor, std::int32_t transIndex);

// Below: the steps of the above, declared for their tests.

/// A channel corrected by three quarters of the error that reached it, 0..255.
short DiffuseIn(std::uint8_t value, std::int16_t error);

/// Spreads an error: a quarter goes to the pixel behind in the row below, and half of the rest each
/// to the pixel below and to the next pixel of the scan. Sums that overflow 16 bits wrap.
void DiffuseOut(std::int16_t error, std::int16_t* behindBelow, std::int16_t* below,
                std::int16_t* ahead);
