// Quarters and halves by rounding down in floating point instead of by shifts.
#include "PlainDiffusion.h"

#include "PlainAdaptivePalette.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

int RoundDown(double value) {
    return static_cast<int>(std::floor(value));
}

void AddWrapping(std::int16_t& cell, int part) {
    const int sum = (cell + part) & 0xFFFF;
    cell = static_cast<std::int16_t>(sum >= 32768 ? sum - 65536 : sum);
}

} // namespace

PlainDiffusion::PlainDiffusion(const RGBLookUpTable& palette, std::vector<std::uint8_t> inverseMap,
                               int pictureColumns, int planeCount, PackedColor transparentColor,
                               std::uint8_t transparentIndex)
    : table(palette), inverse(std::move(inverseMap)), columns(pictureColumns), planes(planeCount),
      below(transparentColor), transIndex(transparentIndex) {}

std::vector<std::uint8_t> PlainDiffusion::Rows(const std::uint8_t* pixels, int firstRow, int rows) {
    std::vector<std::uint8_t> indices;
    for (int y = firstRow; y < firstRow + rows; ++y, pixels += std::ptrdiff_t{columns} * planes)
        OneRow(pixels, y, indices);
    return indices;
}

// What reached row y. When the row above was left out, it is what the last touched row of the same
// parity was left with, since the rows of a parity share their place in memory.
PlainDiffusion::ErrorRow& PlainDiffusion::ErrorsInto(int y) {
    int source = y;
    while (source >= 0 && !errors.contains(source)) source -= 2;
    if (source != y)
        errors[y] = source >= 0 ? errors[source] : ErrorRow(static_cast<std::size_t>(columns + 2));
    return errors[y];
}

void PlainDiffusion::OneRow(const std::uint8_t* pixels, int y, std::vector<std::uint8_t>& indices) {
    ErrorRow& here = ErrorsInto(y);
    ErrorRow& next = errors[y + 1] = ErrorRow(static_cast<std::size_t>(columns + 2));
    const std::size_t firstOfRow = indices.size();
    indices.resize(firstOfRow + static_cast<std::size_t>(columns));
    const bool backward = y % 4 >= 2;
    for (int i = 0; i < columns; ++i) {
        const int x = backward ? columns - 1 - i : i;
        const std::size_t cell = static_cast<std::size_t>(x + 1);
        const std::size_t ahead = backward ? cell - 1 : cell + 1;
        const std::size_t behind = backward ? cell + 1 : cell - 1;
        const std::uint8_t* pixel = pixels + std::ptrdiff_t{x} * planes;
        std::uint8_t& index = indices[firstOfRow + static_cast<std::size_t>(x)];
        if (planes == 4 && pixel[3] == 0) {
            index = transIndex;
            continue;
        }
        const RGBtuple color =
            planes == 4 ? PlainOver(pixel, below) : RGBtuple{0, pixel[0], pixel[1], pixel[2]};
        int wanted[3] = {color.red, color.green, color.blue};
        for (std::size_t c = 0; c < 3; ++c)
            wanted[c] =
                std::clamp(wanted[c] + here[cell][c] - RoundDown(here[cell][c] / 4.0), 0, 255);
        index = inverse[static_cast<std::size_t>(wanted[0] / 8 * 1024 + wanted[1] / 8 * 32 +
                                                 wanted[2] / 8)];
        const int got[3] = {table.red[index], table.green[index], table.blue[index]};
        for (std::size_t c = 0; c < 3; ++c) {
            const int error = wanted[c] - got[c];
            const int quarter = RoundDown(error / 4.0);
            const int share = RoundDown((error - quarter) / 2.0);
            AddWrapping(next[behind][c], quarter);
            AddWrapping(next[cell][c], share);
            AddWrapping(here[ahead][c], share);
        }
    }
}
