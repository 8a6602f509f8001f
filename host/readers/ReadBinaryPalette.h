// Reads palette files of bytes: swatches, colour tables and RIFF palettes.
#pragma once

#include "Color.h"

#include <cstdint>
#include <span>

namespace gif89 {

/// Each takes a whole file that its signature, or its size, says to be of that format, and throws
/// Problem for one that is cut short, damaged, or without 1 to 256 colours. Colours of more than 8
/// bits are rounded.

/// Adobe Swatch Exchange, which begins with "ASEF". Swatches are RGB, grey, or CMYK by plain
/// multiplication; those in Lab are refused. Names and groups are passed over.
Palette ReadSwatchExchange(std::span<const std::uint8_t> bytes);

/// Colour swatches (ACO, ZCO), which begin with version 1 or 2 in two bytes. Of a file of both
/// versions the first is taken, as the other repeats it with names. Swatches are RGB, HSB, or CMYK
/// by plain multiplication; others are refused. What comes after the last swatch is not read.
Palette ReadSwatches(std::span<const std::uint8_t> bytes);

/// Whether a file of that size can be a colour table.
bool HasColorTableSize(std::uintmax_t size);

/// A colour table (ACT, ZCT) of 256 entries of three bytes; or of 772 bytes, when two more say how
/// many entries are in use. The last two, the number of a transparent entry, are of no use here: it
/// stays an entry like others.
Palette ReadColorTable(std::span<const std::uint8_t> bytes);

/// A RIFF palette, which begins with "RIFF", a length and "PAL ". Chunks before its "data" are
/// passed over, and so is what comes after the last colour.
Palette ReadRiffPalette(std::span<const std::uint8_t> bytes);

} // namespace gif89
