// The inverse map of a palette: from each cell of the colour cube to a near palette entry.
#pragma once

#include "ColorTable.h"

/// Fills the inverse map of a palette.
///
/// @param table     the palette
/// @param inverse   32768 palette indices, at red >> 3 x 1024 + green >> 3 x 32 + blue >> 3
/// @param distance  32768 bytes to work in; afterwards the distance of each cell's entry
/// @param numColors entries in use, 1..256; those beyond it show through as the last used one
///
/// Every cell gets an entry at the smallest city-block distance in cells; where several entries
/// share a cell, the lowest. The caller owns every buffer.
void BuildInverse(const RGBLookUpTable* table, std::uint8_t* inverse, std::uint8_t* distance,
                  short numColors);

// Below: the steps of the above, declared for their tests.

/// Carries entries along a line of 32 cells, `stride` bytes apart. A cell takes the carried entry
/// only when that is nearer than its own. Returns the index that is carried at the end.
std::uint8_t SpreadAcross(std::uint8_t* inverse, std::uint8_t* distance, short stride);

/// Spreads along a line of 32 cells, forward and then back.
void SpreadLine(std::uint8_t* inverse, std::uint8_t* distance, short stride);
