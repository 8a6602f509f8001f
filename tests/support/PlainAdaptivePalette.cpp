#include "PlainAdaptivePalette.h"

#include "HSVColor.h"

#include <algorithm>
#include <array>

namespace {

constexpr int kCells = 32; // along each channel

struct Box {
    int lo[3], hi[3], median[3]; // red, green, blue

    int Span(int channel) const { return hi[channel] - lo[channel]; }
};

// Draws the bounds in to the cells that hold pixels and finds the medians; false without pixels.
bool Fit(Box& box, const std::vector<std::uint32_t>& histogram) {
    std::int64_t along[3][kCells] = {}; // pixels by cell of each channel
    std::int64_t total = 0;
    for (int r = box.lo[0]; r <= box.hi[0]; ++r)
        for (int g = box.lo[1]; g <= box.hi[1]; ++g)
            for (int b = box.lo[2]; b <= box.hi[2]; ++b) {
                const std::uint32_t pixels =
                    histogram[static_cast<std::size_t>(r * 1024 + g * 32 + b)];
                along[0][r] += pixels;
                along[1][g] += pixels;
                along[2][b] += pixels;
                total += pixels;
            }
    if (total == 0) return false;
    for (int c = 0; c < 3; ++c) {
        while (along[c][box.lo[c]] == 0) ++box.lo[c];
        while (along[c][box.hi[c]] == 0) --box.hi[c];
        // The median is the cell with which half of the pixels are reached.
        std::int64_t reached = 0;
        for (box.median[c] = box.lo[c];; ++box.median[c]) {
            reached += along[c][box.median[c]];
            if (2 * reached >= total) break;
        }
    }
    return true;
}

// Cuts the box with the longest side, the earliest of several, along its first such side.
int Cut(Box* boxes, int target, const std::vector<std::uint32_t>& histogram) {
    int made = 1;
    for (; made < target; ++made) {
        int longest = 0, channel = 0;
        for (int i = 0; i < made; ++i)
            for (int c = 0; c < 3; ++c)
                if (boxes[i].Span(c) > boxes[longest].Span(channel)) {
                    longest = i;
                    channel = c;
                }
        Box& lower = boxes[longest];
        Box& upper = boxes[made];
        if (lower.Span(channel) == 0) break;
        const int middle = (lower.lo[channel] + lower.hi[channel]) / 2;
        const int median = lower.median[channel];
        const int firstUpper = median > middle ? median : median + 1;
        upper = lower;
        upper.lo[channel] = firstUpper;
        lower.hi[channel] = firstUpper - 1;
        Fit(lower, histogram);
        Fit(upper, histogram);
    }
    return made;
}

// Five bits, and then their top three again.
std::uint8_t Widen(int cell) {
    return static_cast<std::uint8_t>(cell << 3 | cell >> 2);
}

struct SortEntry {
    std::array<int, 3> key; // the top bytes of hue, saturation and value
    RGBtuple color;
};

SortEntry MakeSortEntry(const Box& box) {
    const RGBtuple color = {0, Widen(box.median[0]), Widen(box.median[1]), Widen(box.median[2])};
    const auto wide = [](int level) { return static_cast<std::uint16_t>(level * 257); };
    const RGBColor rgb = {wide(color.red), wide(color.green), wide(color.blue)};
    HSVColor hsv;
    RGB2HSV(&rgb, &hsv);
    return {{hsv.hue / 256, hsv.saturation / 256, hsv.value / 256}, color};
}

} // namespace

std::vector<std::uint32_t> PlainHistogram(std::span<const std::uint8_t> pixels, int planes,
                                          PackedColor below) {
    std::vector<std::uint32_t> counts(32768);
    const auto step = static_cast<std::size_t>(planes);
    const RGBtuple under = UnpackColor(below);
    for (std::size_t i = 0; i < pixels.size(); i += step) {
        RGBtuple color = {0, pixels[i], pixels[i + 1], pixels[i + 2]};
        if (planes == 4 && pixels[i + 3] == 0) continue;
        if (planes == 4) color = PlainOver(&pixels[i], under);
        ++counts[static_cast<std::size_t>(color.red / 8 * 1024 + color.green / 8 * 32 +
                                          color.blue / 8)];
    }
    return counts;
}

RGBLookUpTable PlainAdaptivePalette(std::vector<std::uint32_t> histogram, int colors) {
    RGBLookUpTable table = {};
    SetTableEntry(table, 0, {0, 255, 255, 255});
    histogram.front() = histogram.back() = 0; // the darkest and the brightest cell stay out
    Box boxes[256] = {{{0, 0, 0}, {kCells - 1, kCells - 1, kCells - 1}, {}}};
    if (colors < 3 || !Fit(boxes[0], histogram)) return table;
    const int made = Cut(boxes, colors - 2, histogram);

    SortEntry sorted[256];
    std::transform(boxes, boxes + made, sorted, MakeSortEntry);
    std::stable_sort(sorted, sorted + made,
                     [](const SortEntry& a, const SortEntry& b) { return a.key < b.key; });
    for (int i = 0; i < made; ++i) SetTableEntry(table, i + 1, sorted[i].color);
    return table;
}
