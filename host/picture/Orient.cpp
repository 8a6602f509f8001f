#include "Orient.h"

#include "Problem.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

namespace gif89 {

namespace {

/// Where the pixels of the upright picture are found: its rows are the stored rows or columns,
/// and the stored ones may run backward.
struct Turn {
    bool transpose, rowsBackward, columnsBackward;
};
constexpr Turn kTurns[] = {{false, false, false}, // 1
                           {false, false, true},  {false, true, true}, {false, true, false},
                           {true, false, false},  {true, true, false}, {true, true, true},
                           {true, false, true}}; // 8

// Rows of the upright picture that grow side by side, so that what is fetched from a stored row
// is used up when its columns become rows.
constexpr int kBand = 16;

/// A walk over stored pixels: the first, and from one to the next, in bytes.
struct Walk {
    std::ptrdiff_t first, rowStep, columnStep;
    int rows, columns;
};

Walk WalkOf(const Picture& stored, int pixelBytes, Turn turn) {
    const std::ptrdiff_t rowBytes = std::ptrdiff_t{stored.columns} * pixelBytes;
    Walk walk = {0, rowBytes, pixelBytes, stored.rows, stored.columns};
    if (turn.rowsBackward) {
        walk.first += rowBytes * (stored.rows - 1);
        walk.rowStep = -walk.rowStep;
    }
    if (turn.columnsBackward) {
        walk.first += rowBytes - pixelBytes;
        walk.columnStep = -walk.columnStep;
    }
    if (turn.transpose) {
        std::swap(walk.rowStep, walk.columnStep);
        std::swap(walk.rows, walk.columns);
    }
    return walk;
}

template <int kPixelBytes>
void Follow(const Walk& walk, const std::uint8_t* stored, std::uint8_t* upright) {
    const std::ptrdiff_t rowBytes = std::ptrdiff_t{walk.columns} * kPixelBytes;
    for (int band = 0; band < walk.rows; band += kBand) {
        const int bandEnd = std::min(band + kBand, walk.rows);
        for (int start = 0; start < walk.columns; start += kBand) {
            const int end = std::min(start + kBand, walk.columns);
            for (int row = band; row < bandEnd; ++row) {
                const std::uint8_t* from =
                    stored + walk.first + row * walk.rowStep + start * walk.columnStep;
                std::uint8_t* to = upright + row * rowBytes + std::ptrdiff_t{start} * kPixelBytes;
                for (int column = start; column < end; ++column) {
                    std::memcpy(to, from, kPixelBytes);
                    from += walk.columnStep;
                    to += kPixelBytes;
                }
            }
        }
    }
}

void TurnPlane(const Picture& stored, int pixelBytes, Turn turn,
               std::unique_ptr<std::uint8_t[]>& plane) {
    const Walk walk = WalkOf(stored, pixelBytes, turn);
    auto upright = std::make_unique_for_overwrite<std::uint8_t[]>(
        static_cast<std::size_t>(stored.rows) * static_cast<std::size_t>(stored.columns) *
        static_cast<std::size_t>(pixelBytes));
    constexpr decltype(&Follow<1>) kFollow[] = {nullptr, Follow<1>, nullptr, Follow<3>, Follow<4>};
    kFollow[pixelBytes](walk, plane.get(), upright.get());
    plane = std::move(upright);
}

} // namespace

void TurnUpright(Picture& picture) {
    const int orientation = picture.notes.orientation;
    if (orientation < 2 || orientation > 8) return;
    const Turn turn = kTurns[orientation - 1];
    try {
        TurnPlane(picture, picture.BytesPerPixel(), turn, picture.pixels);
        for (Channel& channel : picture.channels) TurnPlane(picture, 1, turn, channel.bytes);
    } catch (const std::bad_alloc&) {
        throw Problem("is stored turned; there is not enough memory to turn it upright");
    }
    if (turn.transpose) std::swap(picture.rows, picture.columns);
    picture.notes.oriented = true;
}

} // namespace gif89
