// Writes palettes as files of other programs.
#pragma once

#include "Color.h"

#include <cstdint>
#include <string>

namespace gif89 {

enum class PaletteFormat : std::uint8_t {
    gpl,  ///< GIMP palette
    hex,  ///< six hexadecimal digits a line
    jasc, ///< JASC palette
    act,  ///< Adobe colour table of 772 bytes, the unused ones 0, without a transparent entry
};

/// The bytes of a palette file.
///
/// @param palette 1..256 entries
/// @param name    of a GIMP palette; what would end its line is left out
std::string PaletteText(PaletteFormat format, const Palette& palette, const std::string& name);

} // namespace gif89
