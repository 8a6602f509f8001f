// Writes EXIF blocks for tests.
#pragma once

#include <cstdint>
#include <vector>

enum class ByteOrder : bool { little, big };

/// A block whose one entry is the orientation, from the TIFF header on.
inline std::vector<std::uint8_t> MakeExif(std::uint8_t orientation,
                                          ByteOrder order = ByteOrder::little) {
    if (order == ByteOrder::big)
        return {'M', 'M',         0, 42, 0, 0, 0, 8,   // header; the directory follows
                0,   1,                                // entries
                1,   0x12,        0, 3,  0, 0, 0, 1,   // tag, type, count
                0,   orientation, 0, 0,  0, 0, 0, 0};  // value, next directory
    return {'I',         'I', 42, 0, 8, 0, 0, 0, 1, 0, //
            0x12,        1,   3,  0, 1, 0, 0, 0,       //
            orientation, 0,   0,  0, 0, 0, 0, 0};
}
