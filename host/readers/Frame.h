// The part of a picture's area that one of its frames covers.
#pragma once

#include <cstdint>

namespace gif89 {

/// A rectangle inside the picture.
struct Frame {
    int left = 0, top = 0;
    int columns = 0, rows = 0;

    bool Covers(int pictureRows, int pictureColumns) const {
        return rows == pictureRows && columns == pictureColumns;
    }
};

/// A plane of rows x columns pixels without padding. Does not own it.
struct Plane {
    std::uint8_t* bytes;
    int rows, columns;
    int bytesPerPixel;

    std::uint8_t* At(int row, int column) const;
};

/// Sets the bytes of all pixels outside the frame to one value.
void FillAround(const Plane& plane, const Frame& frame, std::uint8_t value);

} // namespace gif89
