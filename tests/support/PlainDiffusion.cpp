#include "PlainDiffusion.h"

#include "DiffuseColor.h"
#include "PlainAdaptivePalette.h"

#include <cstddef>
#include <utility>

PlainDiffusion::PlainDiffusion(const RGBLookUpTable& palette, std::vector<std::uint8_t> inverseMap,
                               int pictureColumns, int planeCount, PackedColor transparentColor,
                               std::uint8_t transparentIndex)
    : errors(static_cast<std::size_t>(pictureColumns + 2) * 6), table(palette),
      inverse(std::move(inverseMap)), columns(pictureColumns), planes(planeCount),
      below(UnpackColor(transparentColor)), transIndex(transparentIndex) {}

void PlainDiffusion::Rows(const std::uint8_t* pixels, int firstRow, int rows,
                          std::uint8_t* indices) {
    for (int y = firstRow; y < firstRow + rows; ++y, indices += columns) {
        if (planes == 3)
            OneRow<3>(pixels, y, indices);
        else
            OneRow<4>(pixels, y, indices);
        pixels += std::ptrdiff_t{columns} * planes;
    }
}

std::vector<std::uint8_t> PlainDiffusion::Rows(const std::uint8_t* pixels, int firstRow, int rows) {
    std::vector<std::uint8_t> indices(static_cast<std::size_t>(rows) *
                                      static_cast<std::size_t>(columns));
    Rows(pixels, firstRow, rows, indices.data());
    return indices;
}

// Rows 0, 1, 4, 5 and so on run from left to right, the others from right to left.
template <int kPlanes>
void PlainDiffusion::OneRow(const std::uint8_t* pixels, int y, std::uint8_t* indices) {
    const std::ptrdiff_t half = (std::ptrdiff_t{columns} + 2) * 3;
    std::int16_t* here = errors.data() + y % 2 * half;
    std::int16_t* next = errors.data() + (1 - y % 2) * half;
    std::fill_n(next, half, std::int16_t{0});
    const bool backward = y % 4 >= 2;
    const int ahead = backward ? -3 : 3; // values from a pixel to the one that follows
    for (int i = 0; i < columns; ++i) {
        const int x = backward ? columns - 1 - i : i;
        const std::uint8_t* pixel = pixels + std::ptrdiff_t{x} * kPlanes;
        RGBtuple color = {0, pixel[0], pixel[1], pixel[2]};
        if constexpr (kPlanes == 4) {
            if (pixel[3] == 0) {
                indices[x] = transIndex;
                continue;
            }
            if (pixel[3] != 255) color = PlainOver(pixel, below);
        }
        int wanted[3] = {color.red, color.green, color.blue};
        std::int16_t* cell = here + 3 * (x + 1);
        std::int16_t* under = next + 3 * (x + 1);
        for (int c = 0; c < 3; ++c)
            wanted[c] = DiffuseIn(static_cast<std::uint8_t>(wanted[c]), cell[c]);
        const std::uint8_t index = inverse[static_cast<std::size_t>(
            (wanted[0] >> 3 << 10) + (wanted[1] >> 3 << 5) + (wanted[2] >> 3))];
        indices[x] = index;
        const int got[3] = {table.red[index], table.green[index], table.blue[index]};
        for (int c = 0; c < 3; ++c)
            DiffuseOut(static_cast<std::int16_t>(wanted[c] - got[c]), &under[c - ahead], &under[c],
                       &cell[c + ahead]);
    }
}
