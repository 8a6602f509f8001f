// Colours and palettes as lists.
#pragma once

#include <cstdint>
#include <vector>

namespace gif89 {

/// A colour of 8 bits a channel, sRGB.
struct Color {
    std::uint8_t red = 0, green = 0, blue = 0;

    bool operator==(const Color&) const = default;
    /// Red in the highest of three bytes.
    std::uint32_t Packed() const {
        return static_cast<std::uint32_t>(red << 16 | green << 8 | blue);
    }
    static Color Unpack(std::uint32_t packed) {
        return {static_cast<std::uint8_t>(packed >> 16), static_cast<std::uint8_t>(packed >> 8),
                static_cast<std::uint8_t>(packed)};
    }
};

/// Entries in their order, at most 256; the same colour may occur more than once.
using Palette = std::vector<Color>;

/// The largest number of entries of a palette.
constexpr int kMostEntries = 256;

} // namespace gif89
