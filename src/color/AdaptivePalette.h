// Cuts the colour cube into boxes by a picture's histogram, one for each colour of an adaptive
// palette (median cut).
#pragma once

#include "ColorTable.h"

/// Makes a palette of white, the colours of numColors - 2 boxes sorted by hue, saturation and
/// value, and black.
///
/// @param table     all 256 entries are written; those that are not used are black
/// @param numColors 0..256, more counts as 256; below 3 there are no boxes
/// @param histogram counts of up to 2^30 pixels; its darkest and brightest cells are cleared,
///                  since black and white are in the palette already
///
/// When the picture fills fewer cells than there are boxes, the entries left over are black.
/// Source: P. Heckbert, "Color Image Quantization for Frame Buffer Display", SIGGRAPH 1982; boxes
/// are chosen by their longest side alone.
void MakeAdaptivePalette(RGBLookUpTable* table, short numColors,
                         std::uint32_t histogram[32][32][32]);

// Below: the steps of MakeAdaptivePalette, declared for its tests.

/// One box of the cut.
struct HistRange {
    struct {
        std::int16_t lo, hi; ///< cells, 0..31, both inside the box
        std::int16_t median; ///< the cell at which half of the box's pixels are reached
        std::int16_t span;   ///< hi - lo
    } channels[3];           ///< red, green, blue
};

/// Adds up the counts of a box (bounds inclusive) along each channel.
void ProjectBox(short redLo, short redHi, short greenLo, short greenHi, short blueLo, short blueHi,
                std::int32_t redProj[32], std::int32_t greenProj[32], std::int32_t blueProj[32],
                const std::uint32_t histogram[32][32][32]);

/// Shrinks the box to the cells that hold pixels and finds its medians. Returns 1, or 0 when the
/// box is empty; its bounds are then undefined.
short ShrinkBox(HistRange* box, const std::uint32_t histogram[32][32][32]);

/// Cuts a shrunk box of positive span at its median. The box keeps the lower part and `newBox`
/// becomes the upper one. Both hold pixels and are shrunk.
void SplitBox(HistRange* box, HistRange* newBox, short channel,
              const std::uint32_t histogram[32][32][32]);

/// Sorts `count` entries from `first` by the top bytes of hue, saturation and value.
void SortAdaptive(RGBLookUpTable* table, short first, short count);

/// Compares two sort keys of four bytes, for qsort.
int CompareAdaptive(const void* a, const void* b);
