// A picture's distinct colours, found the plain way.
#pragma once

#include "ColorTable.h"

#include <span>
#include <vector>

/// The distinct colours of interleaved RGB pixels with white and black among them, packed, in
/// descending order; stops at 257 of them.
std::vector<PackedColor> PlainExactColors(std::span<const std::uint8_t> rgb);

/// For each pixel the position of the smallest colour that is not below its own; `colors` as
/// above, at most 256.
std::vector<std::uint8_t> PlainExactIndices(const std::vector<PackedColor>& colors,
                                            std::span<const std::uint8_t> rgb);
