// Every line of the cube is swept there and back.
#include "PlainInverseMap.h"

#include "InverseMap.h"

#include <algorithm>
#include <array>

namespace {

struct Cube {
    std::uint8_t index[32768]; // red slowest
    std::uint8_t distance[32768];
};

} // namespace

std::vector<std::uint8_t> PlainInverseMap(const RGBLookUpTable& table, int colors) {
    Cube cube = {};
    std::fill_n(cube.distance, 32768, std::uint8_t{255}); // not reached yet
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
                SpreadLine(cube.index + first, cube.distance + first, static_cast<short>(step));
            }
    return {cube.index, cube.index + 32768};
}
