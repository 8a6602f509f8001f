// Every line of the cube is swept there and back.
#include "PlainInverseMap.h"

#include <algorithm>
#include <array>

namespace {

struct Cube {
    std::uint8_t index[32768]; // red slowest
    std::uint8_t distance[32768];
};

// Hands on along a line of 32 cells what is nearer than the cell's own entry.
void Sweep(Cube& cube, int first, int step) {
    std::uint8_t index = cube.index[first];
    int distance = cube.distance[first];
    for (int k = 1, cell = first + step; k < 32; ++k, cell += step) {
        ++distance;
        if (distance < cube.distance[cell]) {
            cube.index[cell] = index;
            cube.distance[cell] = static_cast<std::uint8_t>(distance);
        } else {
            index = cube.index[cell];
            distance = cube.distance[cell];
        }
    }
}

} // namespace

std::vector<std::uint8_t> PlainInverseMap(const RGBLookUpTable& table, int colors) {
    constexpr std::uint8_t kFar = 255; // sweeps carry it on as 256 and more, which is never nearer
    Cube cube = {};
    std::fill_n(cube.distance, 32768, kFar);
    for (int i = 255; i >= 0; --i) { // the lowest of those that share a cell comes last
        const int cell = table.red[i] / 8 * 1024 + table.green[i] / 8 * 32 + table.blue[i] / 8;
        cube.index[cell] = static_cast<std::uint8_t>(std::min(i, colors - 1));
        cube.distance[cell] = 0;
    }
    // Along green, then red, then blue: the step of a line, and of its two other directions.
    for (const auto& [step, across, down] : {std::array{32, 1, 1024}, {1024, 1, 32}, {1, 32, 1024}})
        for (int i = 0; i < 32; ++i)
            for (int j = 0; j < 32; ++j) {
                const int first = i * across + j * down;
                Sweep(cube, first, step);
                Sweep(cube, first + 31 * step, -step);
            }
    return {cube.index, cube.index + 32768};
}
