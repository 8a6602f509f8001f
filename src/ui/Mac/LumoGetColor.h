// Picks a colour: through the host's colour services where there are any, else in the toolbox's
// colour picker.
#pragma once

#include "BigEndian.h"
#include "ExportRecord.h"

#include <cstddef>

/// What the host's colour services are handed. Big-endian, alignment 1.
struct ColorServicesInfo {
    BigInt32 infoSize;     ///< 36
    BigInt16 words[3];     ///< 0
    BigInt32 longs[2];     ///< 0
    BigInt16 component[3]; ///< red, green, blue, 0..255; in: where to start, out: what was chosen
    std::uint8_t reserved[12]; ///< 0
};
static_assert(offsetof(ColorServicesInfo, component) == 18);
static_assert(sizeof(ColorServicesInfo) == 36 && alignof(ColorServicesInfo) == 1);

/// @param services the host's procedure, or null when it offers none
/// @param where    global position of the toolbox's picker; 0, 0 lets it choose
/// @param prompt   shown by the toolbox's picker only
/// @param outColor may be the same as inColor; the host's services leave it alone when they choose
///                 nothing
/// @return true when a colour was chosen
Boolean LumoGetColor(ColorServicesProc* services, Point where, ConstStr255Param prompt,
                     const RGBColor* inColor, RGBColor* outColor);
