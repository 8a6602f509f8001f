// Decodes the picture resources that the artwork is compiled to.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#pragma GCC visibility push(default)

/// The pixels of a picture, true colour: 0x00RRGGBB, `columns` a row, no padding.
struct DecodedPicture {
    int rows = 0;
    int columns = 0;
    std::vector<std::uint32_t> pixels;
};

/// The pixel map of a picture of version 2 with an extended header whose one drawing is a packed
/// 8-bit indexed pixel map that covers the header's inner rectangle whole, unscaled. Drawn into a
/// rectangle, that inner rectangle takes all of it; the frame in points only tells the usual size.
///
/// @param bytes the whole resource; any bytes are safe
/// @return nothing for every other picture, for a damaged one and for one that ends early
std::optional<DecodedPicture> DecodePicture(std::span<const std::uint8_t> bytes);

#pragma GCC visibility pop
