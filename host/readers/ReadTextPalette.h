// Reads palette files of text: GIMP palettes, JASC palettes and lists of hexadecimal colours.
#pragma once

#include "Color.h"

#include <string_view>

namespace gif89 {

/// Each takes a whole file; lines end as they do on any system. They throw Problem, which names the
/// line, for one that is damaged or without 1 to 256 colours.

/// A GIMP palette, whose first line is "GIMP Palette". Names and remarks are passed over.
Palette ReadGimpPalette(std::string_view text);

/// A JASC palette: "JASC-PAL", "0100", the number of colours, and as many lines.
Palette ReadJascPalette(std::string_view text);

/// Colours of six hexadecimal digits, with # before them or not, parted by blanks, commas or lines;
/// or of eight digits without #, opacity first, as paint.net writes them, whose opacity is dropped.
/// A semicolon starts a remark.
Palette ReadHexPalette(std::string_view text);

} // namespace gif89
