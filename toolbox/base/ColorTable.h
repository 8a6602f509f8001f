// The palette and colour records that palette, dithering, file and dialog code share.
#pragma once

#include "ToolboxTypes.h"

/// A palette of exactly 256 entries in three planes; how many are in use travels separately, and
/// entries past that count are black.
struct RGBLookUpTable {
    std::uint8_t red[256];
    std::uint8_t green[256];
    std::uint8_t blue[256];
};
static_assert(sizeof(RGBLookUpTable) == 768, "three planes of 256 bytes, read and written whole");

/// One colour of three 8-bit channels; the leading byte stays 0.
struct RGBtuple {
    std::uint8_t unused = 0;
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

/// A colour packed as red x 65536 + green x 256 + blue, 0x000000..0xFFFFFF.
using PackedColor = std::uint32_t;

constexpr PackedColor PackRGB(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return PackedColor{red} << 16 | PackedColor{green} << 8 | blue;
}
constexpr PackedColor PackColor(RGBtuple color) {
    return PackRGB(color.red, color.green, color.blue);
}
constexpr RGBtuple UnpackColor(PackedColor packed) {
    return {0, static_cast<std::uint8_t>(packed >> 16), static_cast<std::uint8_t>(packed >> 8),
            static_cast<std::uint8_t>(packed)};
}

constexpr RGBtuple TableEntry(const RGBLookUpTable& table, int index) {
    return {0, table.red[index], table.green[index], table.blue[index]};
}
constexpr void SetTableEntry(RGBLookUpTable& table, int index, RGBtuple color) {
    table.red[index] = color.red;
    table.green[index] = color.green;
    table.blue[index] = color.blue;
}
