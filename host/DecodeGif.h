// Reads a GIF file back, whole and strictly, to check what the module wrote.
#pragma once

#include "ColorTable.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace gif89 {

/// The only image of a GIF file.
struct DecodedGif {
    int rows = 0;
    int columns = 0;
    bool interlaced = false;
    int transparentIndex = -1; ///< -1 for none
    int colors = 0;            ///< entries of the colour table, a power of two, 2..256
    RGBLookUpTable table = {};
    std::optional<std::string> comment;
    std::unique_ptr<std::uint8_t[]> indices; ///< rows x columns, top row first, no padding
};

/// Decodes a file that holds exactly one image covering the screen, with a global colour table.
/// Throws Problem, with the byte offset, for anything else: a wrong signature, a block cut short,
/// an impossible code, too few or too many pixels, an index past the table, bytes after the
/// trailer. Throws std::bad_alloc when there is no memory; a file asks for no more than its data
/// can fill.
DecodedGif DecodeGif(std::span<const std::uint8_t> file);

} // namespace gif89
