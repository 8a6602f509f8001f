// Reads a palette of any kind of file that we know.
#pragma once

#include "Color.h"

#include <string>

namespace gif89 {

/// Reads the palette in a file, whose kind is told by its content alone where that is possible:
/// GIMP and JASC palettes, lists of hexadecimal colours, paint.net palettes, Adobe swatches (ASE,
/// ACO), colour tables (ACT), RIFF palettes, and pictures. An extension counts only for files of
/// 768 or 772 bytes, since colour tables have no signature.
///
/// The palette of a picture is its colour table or else its colours in order of first appearance,
/// without those of pixels that cannot be seen at all. Order, duplicates and unused entries are
/// kept. Throws Problem for a file that is unknown, damaged or without 1 to 256 colours.
Palette ReadPaletteFile(const std::string& path);

} // namespace gif89
