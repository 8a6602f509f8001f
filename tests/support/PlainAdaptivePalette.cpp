// Every box keeps the list of its own cells; nothing is projected or shrunk.
#include "PlainAdaptivePalette.h"

#include "HostUtilities.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

struct Cell {
    std::array<int, 3> at; // red, green, blue
    std::int64_t pixels;
};

struct Box {
    explicit Box(std::vector<Cell> own) : cells(std::move(own)) {
        for (std::size_t c = 0; c < 3; ++c) {
            std::sort(cells.begin(), cells.end(),
                      [c](const Cell& a, const Cell& b) { return a.at[c] < b.at[c]; });
            lo[c] = cells.front().at[c];
            hi[c] = cells.back().at[c];
            std::int64_t total = 0, seen = 0;
            for (const Cell& cell : cells) total += cell.pixels;
            for (const Cell& cell : cells) {
                if (2 * seen < total) median[c] = cell.at[c];
                seen += cell.pixels;
            }
        }
    }

    std::vector<Cell> cells;
    std::array<int, 3> lo, hi, median;
};

// Five bits, and then their top three again.
std::uint8_t Widen(int cell) {
    return static_cast<std::uint8_t>(cell << 3 | cell >> 2);
}

// Hue, saturation and value, the top byte of each.
std::array<int, 3> TopBytesOfHSV(RGBtuple color) {
    const auto wide = [](int level) { return static_cast<std::uint16_t>(level * 257); };
    const RGBColor rgb = {wide(color.red), wide(color.green), wide(color.blue)};
    HSVColor hsv;
    RGB2HSV(&rgb, &hsv);
    return {hsv.hue / 256, hsv.saturation / 256, hsv.value / 256};
}

std::vector<Box> Cut(Box first, std::size_t target) {
    std::vector<Box> boxes = {std::move(first)};
    while (boxes.size() < target) {
        std::size_t box = 0, channel = 0;
        int span = 0;
        for (std::size_t i = 0; i < boxes.size(); ++i)
            for (std::size_t c = 0; c < 3; ++c)
                if (boxes[i].hi[c] - boxes[i].lo[c] > span) {
                    span = boxes[i].hi[c] - boxes[i].lo[c];
                    box = i;
                    channel = c;
                }
        if (span == 0) break;
        const int middle = (boxes[box].lo[channel] + boxes[box].hi[channel]) / 2;
        const int median = boxes[box].median[channel];
        const int firstUpper = median > middle ? median : median + 1;
        std::vector<Cell> lower, upper;
        for (const Cell& cell : boxes[box].cells)
            (cell.at[channel] < firstUpper ? lower : upper).push_back(cell);
        boxes[box] = Box(lower);
        boxes.emplace_back(upper);
    }
    return boxes;
}

} // namespace

RGBtuple PlainOver(const std::uint8_t* pixel, PackedColor below) {
    const auto mix = [pixel](int color, int under) {
        return static_cast<std::uint8_t>(under + std::lround((color - under) * pixel[3] / 255.0));
    };
    const RGBtuple under = UnpackColor(below);
    return {0, mix(pixel[0], under.red), mix(pixel[1], under.green), mix(pixel[2], under.blue)};
}

std::vector<std::uint32_t> PlainHistogram(std::span<const std::uint8_t> pixels, int planes,
                                          PackedColor below) {
    std::vector<std::uint32_t> counts(32768);
    const auto step = static_cast<std::size_t>(planes);
    for (std::size_t i = 0; i < pixels.size(); i += step) {
        RGBtuple color = {0, pixels[i], pixels[i + 1], pixels[i + 2]};
        if (planes == 4 && pixels[i + 3] == 0) continue;
        if (planes == 4) color = PlainOver(&pixels[i], below);
        ++counts[static_cast<std::size_t>(color.red / 8 * 1024 + color.green / 8 * 32 +
                                          color.blue / 8)];
    }
    return counts;
}

RGBLookUpTable PlainAdaptivePalette(const std::vector<std::uint32_t>& histogram, int colors) {
    RGBLookUpTable table = {};
    SetTableEntry(table, 0, {0, 255, 255, 255});
    std::vector<Cell> cells;
    for (int i = 1; i < 32767; ++i) // the darkest and the brightest cell stay out
        if (histogram[static_cast<std::size_t>(i)] != 0)
            cells.push_back(
                {{i / 1024, i / 32 % 32, i % 32}, histogram[static_cast<std::size_t>(i)]});
    if (colors < 3 || cells.empty()) return table;

    std::vector<RGBtuple> sorted;
    for (const Box& box : Cut(Box(cells), static_cast<std::size_t>(colors - 2)))
        sorted.push_back({0, Widen(box.median[0]), Widen(box.median[1]), Widen(box.median[2])});
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](RGBtuple a, RGBtuple b) { return TopBytesOfHSV(a) < TopBytesOfHSV(b); });
    for (std::size_t i = 0; i < sorted.size(); ++i)
        SetTableEntry(table, static_cast<int>(i + 1), sorted[i]);
    return table;
}
