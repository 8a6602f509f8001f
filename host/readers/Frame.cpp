#include "Frame.h"

#include <algorithm>
#include <cstddef>

namespace gif89 {

std::uint8_t* Plane::At(int row, int column) const {
    return bytes + (std::ptrdiff_t{row} * columns + column) * bytesPerPixel;
}

void FillAround(const Plane& plane, const Frame& frame, std::uint8_t value) {
    // Fills the gap between the end of the frame in one row and its beginning in the next.
    std::uint8_t* free = plane.bytes;
    for (int row = frame.top; row < frame.top + frame.rows; ++row) {
        std::fill(free, plane.At(row, frame.left), value);
        free = plane.At(row, frame.left + frame.columns);
    }
    std::fill(free, plane.At(plane.rows, 0), value);
}

} // namespace gif89
