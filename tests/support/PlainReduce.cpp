#include "PlainReduce.h"

#include <algorithm>
#include <array>

using namespace gif89;

namespace {

using Levels = std::array<int, 3>;

Levels LevelsOf(const Color& color) {
    return {color.red, color.green, color.blue};
}

int EntryOf(const Target& target, const Color& color) {
    for (int n = 0; n < static_cast<int>(target.palette.size()); ++n)
        if (n != target.hidden && target.palette[static_cast<std::size_t>(n)] == color) return n;
    return -1;
}

} // namespace

int PlainNearest(const Target& target, int red, int green, int blue) {
    int nearest = -1, least = 0;
    for (int n = 0; n < static_cast<int>(target.palette.size()); ++n) {
        const Levels entry = LevelsOf(target.palette[static_cast<std::size_t>(n)]);
        const int r = red - entry[0], g = green - entry[1], b = blue - entry[2];
        const int distance = r * r + g * g + b * b;
        if (n == target.hidden || (nearest >= 0 && distance >= least)) continue;
        nearest = n;
        least = distance;
    }
    return nearest;
}

std::vector<std::uint8_t> PlainDiffusePixels(const Pixels& pixels, const Target& target,
                                             int amount) {
    const DiffusionSettings settings = SettingsFor(target);
    const int strength = settings.strength * amount / 100, most = settings.mostError * 16;
    std::vector<std::uint8_t> indices;
    indices.resize(pixels.Count());
    // Left by the pixels of the row above and of this one; none on either side.
    std::vector<Levels> above(static_cast<std::size_t>(pixels.columns) + 2), own = above;
    const int fours = pixels.rows / 4; // the rows that are left turn one by one
    for (int y = 0; y < pixels.rows; ++y) {
        const int turn = y / 4 < fours ? y / 4 : y - fours * 3;
        const int step = turn % 2 == 0 ? 1 : -1;
        for (int n = 0; n < pixels.columns; ++n) {
            const int x = step > 0 ? n : pixels.columns - 1 - n;
            const std::uint8_t* const pixel = pixels.Row(y) + x * pixels.bytesPerPixel;
            std::uint8_t& index = indices[static_cast<std::size_t>(y * pixels.columns + x)];
            Levels& left = own[static_cast<std::size_t>(x + 1)] = {};
            if (pixels.bytesPerPixel == 4 && pixel[3] < pixels.visibleFrom) {
                index = static_cast<std::uint8_t>(target.hidden);
                continue;
            }
            if (const int same = EntryOf(target, {pixel[0], pixel[1], pixel[2]}); same >= 0) {
                index = static_cast<std::uint8_t>(same);
                continue;
            }
            Levels reached, wanted;
            for (std::size_t c = 0; c < 3; ++c) {
                const int before = n > 0 ? own[static_cast<std::size_t>(x + 1 - step)][c] : 0;
                const int sum = 2 * before + above[static_cast<std::size_t>(x + 1)][c] +
                                above[static_cast<std::size_t>(x + 1 + step)][c];
                reached[c] = std::clamp((sum + 2) * 14746 >> 16, -most, most);
                wanted[c] =
                    std::clamp((pixel[c] * 16 + (reached[c] * strength >> 16) + 8) >> 4, 0, 255);
            }
            index =
                static_cast<std::uint8_t>(PlainNearest(target, wanted[0], wanted[1], wanted[2]));
            const Levels entry = LevelsOf(target.palette[index]);
            for (std::size_t c = 0; c < 3; ++c)
                left[c] = pixel[c] * 16 + reached[c] - entry[c] * 16;
        }
        std::swap(above, own);
    }
    return indices;
}
