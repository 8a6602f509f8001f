// The palette that suits a picture best.
#pragma once

#include "ColorCount.h"

namespace gif89 {

/// Finds the colours that stand for the points with the least squared error that is found in
/// reasonable time: the points are cut into boxes, and the boxes' means then moved (k-means).
///
/// @param count  the picture's colours; its points are put in another order
/// @param colors entries wanted, 1..256
/// @param kept   entries that come first and do not move, at most `colors`
/// @param outward percent by which the other entries are moved away from the picture's mean colour;
///               diffusion mixes the colours between entries, but none outside them
/// @return       `colors` entries, fewer when the picture has fewer colours
///
/// Sources: X. Wu, "Color Quantization by Dynamic Programming and Principal Analysis", ACM
/// Transactions on Graphics 11, 1992; S. Lloyd, "Least Squares Quantization in PCM", IEEE
/// Transactions on Information Theory 28, 1982.
Palette MakeBestPalette(ColorCount& count, int colors, const Palette& kept, int outward);

} // namespace gif89
