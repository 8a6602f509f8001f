// The pixels that this folder works on.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gif89 {

/// The pixels of a picture, which somebody else owns: rows x columns pixels without padding, red,
/// green, blue and, with 4 bytes a pixel, an opacity. A pixel whose opacity is too low is
/// transparent and its colour means nothing; every other one counts as opaque.
struct Pixels {
    const std::uint8_t* bytes = nullptr;
    int rows = 0, columns = 0; ///< at least 1
    int bytesPerPixel = 3;     ///< 3 or 4
    int visibleFrom = 1;       ///< the lowest opacity that is not transparent, 0..255

    std::size_t RowBytes() const {
        return static_cast<std::size_t>(columns) * static_cast<std::size_t>(bytesPerPixel);
    }
    const std::uint8_t* Row(int row) const {
        return bytes + static_cast<std::size_t>(row) * RowBytes();
    }
    std::size_t Count() const {
        return static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
    }
};

} // namespace gif89
