// Counts a picture's distinct colours and, when there are at most 256, writes it with exactly
// those.
#pragma once

#include "ColorTable.h"

/// The distinct colours met so far. White and black are always among them.
struct ExactInfo {
    std::int32_t count; ///< colours recorded, 2..256; the caller sets -1 for too many
    /// Packed colours in strictly descending order, so that white is at 0. Empty slots follow the
    /// used ones and hold -1.
    std::int32_t colors[256];
};

/// Starts a count with the two colours white and black.
void ExactStart(ExactInfo* info);

/// Records the colours of a band; a band procedure for planes 0 to 2.
///
/// @param area     the band; no rows or no columns change nothing
/// @param rowBytes bytes from one row of `data` to the next
/// @param data     interleaved red, green, blue
/// @param info     begun by ExactStart; carried from band to band
/// @return 0, or 1 as soon as a 257th colour is met; `info->count` is then what it was before the
///         call, and the recorded colours are incomplete
short ExactCount(const Rect* area, std::int32_t rowBytes, const std::uint8_t* data,
                 ExactInfo* info);

/// Writes the counted colours into `table`, highest packed value first; the remaining entries
/// become black. A count of -1 or 0 makes all of them black.
void MakeExactTable(const ExactInfo* info, RGBLookUpTable* table);

/// Maps pixels to the table of MakeExactTable.
///
/// @param src         rows of interleaved red, green, blue
/// @param dst         one index a pixel; must not overlap src
/// @param rows        pixels; 0 or less does nothing
/// @param columns     pixels; 0 or less does nothing
/// @param srcRowBytes bytes from one row of src to the next
/// @param dstRowBytes bytes from one row of dst to the next
///
/// A colour that was not counted gets the smallest counted colour above it in packed order.
void ExactConvert(const ExactInfo* info, const std::uint8_t* src, std::uint8_t* dst, short rows,
                  short columns, std::int32_t srcRowBytes, std::int32_t dstRowBytes);
