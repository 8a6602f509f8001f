// A GIF file of one image put together in memory as plainly as it can be, against which the
// module's files are compared.
#pragma once

#include "ColorTable.h"
#include "PlainLzw.h"

#include <optional>
#include <random>
#include <string>

struct PlainImage {
    int rows = 0;
    int columns = 0;
    ByteVector indices; ///< rows x columns
    bool interlaced = false;
    int transparentIndex = -1; ///< -1 for none
    int colors = 256;          ///< 2..256
    RGBLookUpTable table = {};
    std::optional<std::string> comment;
};

/// The whole file.
ByteVector PlainGif(const PlainImage& image);

/// The bytes as data sub-blocks of 255 and a rest, with the terminator.
ByteVector DataBlocks(std::span<const std::uint8_t> bytes);

/// An image whose index changes with every n-th pixel or so: 1 gives noise, rows x columns nearly
/// one colour. Table entries are random, those past `colors` too.
PlainImage RandomImage(std::mt19937& random, int rows, int columns, int colors, int runLength);
