// Every line of the cube is swept there and back.
#include "PlainInverseMap.h"

#include <algorithm>
#include <array>

namespace {

struct Cell {
    int index = 0;
    int distance = 1000;
};
using Cube = std::vector<Cell>; // 32768 cells, red slowest

void Sweep(Cube& cube, int first, int step) {
    for (int k = 1; k < 32; ++k) {
        Cell& here = cube[static_cast<std::size_t>(first + k * step)];
        const Cell& before = cube[static_cast<std::size_t>(first + (k - 1) * step)];
        if (before.distance + 1 < here.distance) here = {before.index, before.distance + 1};
    }
}

} // namespace

std::vector<std::uint8_t> PlainInverseMap(const RGBLookUpTable& table, int colors) {
    Cube cube(32768);
    for (int i = 255; i >= 0; --i) // the lowest of those that share a cell comes last
        cube[static_cast<std::size_t>(table.red[i] / 8 * 1024 + table.green[i] / 8 * 32 +
                                      table.blue[i] / 8)] = {std::min(i, colors - 1), 0};
    // Along green, then red, then blue: the step of a line, and of its two other directions.
    for (const auto& [step, across, down] : {std::array{32, 1, 1024}, {1024, 1, 32}, {1, 32, 1024}})
        for (int i = 0; i < 32; ++i)
            for (int j = 0; j < 32; ++j) {
                const int first = i * across + j * down;
                Sweep(cube, first, step);
                Sweep(cube, first + 31 * step, -step);
            }
    std::vector<std::uint8_t> inverse;
    for (const Cell& cell : cube) inverse.push_back(static_cast<std::uint8_t>(cell.index));
    return inverse;
}
