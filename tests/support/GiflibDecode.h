// Reads a GIF file through giflib, as a reader from outside that knows nothing of this project.
#pragma once

#include "ColorTable.h"
#include "PlainLzw.h"

#include <optional>
#include <string>

/// The first image of a file.
struct GiflibPicture {
    int rows = 0;
    int columns = 0;
    int colors = 0; ///< entries of the colour table
    RGBLookUpTable table = {};
    ByteVector indices; ///< rows x columns, top row first
    int transparentIndex = -1;
    bool interlaced = false;
    std::optional<std::string> comment; ///< an empty comment is not told from none
};

/// Nothing, with giflib's reason in *reason, when giflib refuses the file or it holds no image or
/// no table.
std::optional<GiflibPicture> GiflibDecode(std::span<const std::uint8_t> file, std::string* reason);
