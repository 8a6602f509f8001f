// Cells know their place in the cube, and lines are gathered before they are swept.
#include "PlainInverseMap.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>

namespace {

struct Cell {
    int index = 0;
    int distance = 1000;
};
using Line = std::array<Cell*, 32>;

struct Cube {
    Cell cells[32][32][32];
};

void Sweep(const Line& line) {
    for (int k = 1; k < 32; ++k) {
        Cell& here = *line[static_cast<std::size_t>(k)];
        const Cell& before = *line[static_cast<std::size_t>(k - 1)];
        if (before.distance + 1 < here.distance) here = {before.index, before.distance + 1};
    }
}

// Palette entries by cell: the lowest of those that share one; unused entries stand for the last.
std::map<std::array<int, 3>, int> OwnersOf(const RGBLookUpTable& table, int colors) {
    std::map<std::array<int, 3>, int> owners;
    for (int i = 0; i < 256; ++i) // emplace keeps the first
        owners.emplace(std::array{table.red[i] / 8, table.green[i] / 8, table.blue[i] / 8},
                       std::min(i, colors - 1));
    return owners;
}

} // namespace

std::vector<std::uint8_t> PlainInverseMap(const RGBLookUpTable& table, int colors) {
    static thread_local Cube cube;
    cube = {};
    for (const auto& [at, index] : OwnersOf(table, colors))
        cube.cells[at[0]][at[1]][at[2]] = {index, 0};
    for (const char axis : {'g', 'r', 'b'})
        for (int i = 0; i < 32; ++i)
            for (int j = 0; j < 32; ++j) {
                Line line;
                for (int k = 0; k < 32; ++k)
                    line[static_cast<std::size_t>(k)] = axis == 'g'   ? &cube.cells[i][k][j]
                                                        : axis == 'r' ? &cube.cells[k][i][j]
                                                                      : &cube.cells[i][j][k];
                Sweep(line);
                std::reverse(line.begin(), line.end());
                Sweep(line);
            }
    std::vector<std::uint8_t> inverse;
    for (const auto& plane : cube.cells)
        for (const auto& row : plane)
            for (const Cell& cell : row) inverse.push_back(static_cast<std::uint8_t>(cell.index));
    return inverse;
}

std::string FindFarCell(const RGBLookUpTable& table, int colors,
                        const std::vector<std::uint8_t>& inverse) {
    const auto owners = OwnersOf(table, colors);
    for (int cell = 0; cell < 32768; ++cell) {
        const int index = inverse[static_cast<std::size_t>(cell)];
        int nearest = 1000, own = 1000;
        for (const auto& [at, owner] : owners) {
            const int distance = std::abs(at[0] - cell / 1024) + std::abs(at[1] - cell / 32 % 32) +
                                 std::abs(at[2] - cell % 32);
            nearest = std::min(nearest, distance);
            if (owner == index) own = std::min(own, distance);
        }
        if (own != nearest)
            return "cell " + std::to_string(cell) + " holds index " + std::to_string(index) +
                   " at distance " + std::to_string(own) + ", the nearest is at " +
                   std::to_string(nearest);
    }
    return {};
}
