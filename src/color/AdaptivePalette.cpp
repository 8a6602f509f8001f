// The histogram passes, the median cut, and the order of the palette it yields.
#include "AdaptivePalette.h"

#include "Composite.h"
#include "HostUtilities.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kCells = 32; // along each channel
constexpr int kLargestPalette = 256;
constexpr RGBtuple kWhite = {0, 255, 255, 255};

// Calls `count` with every pixel of a band.
template <int kPixelBytes, class CountPixel>
void ForEachPixel(const Rect& area, std::int32_t rowBytes, const std::uint8_t* data,
                  CountPixel count) {
    const int rows = area.bottom - area.top;
    const int columns = area.right - area.left;
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* pixel = data + std::ptrdiff_t{y} * rowBytes;
        for (int x = 0; x < columns; ++x, pixel += kPixelBytes) count(pixel);
    }
}

// The list of boxes grows up to `target`. The box with the longest side is cut next, whatever its
// pixels: ties go to the earlier box, then to red before green before blue.
int CutBoxes(HistRange* boxes, int target, const std::uint32_t histogram[32][32][32]) {
    int made = 1;
    while (made < target) {
        int longestBox = 0, longestChannel = 0;
        for (int i = 0; i < made; ++i)
            for (int c = 0; c < 3; ++c)
                if (boxes[i].channels[c].span > boxes[longestBox].channels[longestChannel].span) {
                    longestBox = i;
                    longestChannel = c;
                }
        if (boxes[longestBox].channels[longestChannel].span == 0) break; // all are single cells
        SplitBox(&boxes[longestBox], &boxes[made++], static_cast<short>(longestChannel), histogram);
    }
    return made;
}

// Repeats the top bits of a cell number below it, so that 31 becomes 255.
std::uint8_t WidenCell(std::int16_t cell) {
    return static_cast<std::uint8_t>(cell * 8 + (cell >> 2));
}

struct SortKey {
    std::uint8_t hue, saturation, value;
    std::uint8_t index; // makes every key distinct, so equal colours keep their order
};
static_assert(sizeof(SortKey) == 4, "keys are compared byte by byte");

SortKey MakeSortKey(const RGBLookUpTable& table, int index) {
    const auto widen = [](std::uint8_t level) { return static_cast<std::uint16_t>(level * 257); };
    const RGBColor rgb = {widen(table.red[index]), widen(table.green[index]),
                          widen(table.blue[index])};
    HSVColor hsv;
    RGB2HSV(&rgb, &hsv);
    const auto topByte = [](std::uint16_t level) { return static_cast<std::uint8_t>(level >> 8); };
    return {topByte(hsv.hue), topByte(hsv.saturation), topByte(hsv.value),
            static_cast<std::uint8_t>(index)};
}

} // namespace

short CalcHistogram3DNoTransparency(const Rect* area, std::int32_t rowBytes,
                                    const std::uint8_t* data, std::uint32_t histogram[32][32][32]) {
    ForEachPixel<3>(*area, rowBytes, data, [=](const std::uint8_t* pixel) {
        ++histogram[pixel[0] >> 3][pixel[1] >> 3][pixel[2] >> 3];
    });
    return 0;
}

short CalcHistogram3DWithTransparency(const Rect* area, std::int32_t rowBytes,
                                      const std::uint8_t* data, HistInfo* info) {
    Histogram& histogram = *info->histogram;
    const RGBtuple below = UnpackColor(info->transColor);
    ForEachPixel<4>(*area, rowBytes, data, [&histogram, below](const std::uint8_t* pixel) {
        if (pixel[3] == 0) return;
        const RGBtuple color = CompositePixel(pixel, below);
        ++histogram[color.red >> 3][color.green >> 3][color.blue >> 3];
    });
    return 0;
}

void MakeAdaptivePalette(RGBLookUpTable* table, short numColors,
                         std::uint32_t histogram[32][32][32]) {
    *table = {};
    SetTableEntry(*table, 0, kWhite);
    if (numColors < 3) return;
    histogram[0][0][0] = 0;
    histogram[kCells - 1][kCells - 1][kCells - 1] = 0;

    HistRange boxes[kLargestPalette] = {};
    for (auto& channel : boxes[0].channels) channel = {0, kCells - 1, 0, kCells - 1};
    if (!ShrinkBox(&boxes[0], histogram)) return;
    const int made = CutBoxes(boxes, std::min<int>(numColors, kLargestPalette) - 2, histogram);

    // The colour of a box is its median cell, not the mean of its pixels.
    for (int i = 0; i < made; ++i) {
        const auto& [red, green, blue] = boxes[i].channels;
        SetTableEntry(*table, i + 1,
                      {0, WidenCell(red.median), WidenCell(green.median), WidenCell(blue.median)});
    }
    if (made > 1) SortAdaptive(table, 1, static_cast<short>(made));
}

void ProjectBox(short redLo, short redHi, short greenLo, short greenHi, short blueLo, short blueHi,
                std::int32_t redProj[32], std::int32_t greenProj[32], std::int32_t blueProj[32],
                const std::uint32_t histogram[32][32][32]) {
    for (std::int32_t* projection : {redProj, greenProj, blueProj})
        std::fill_n(projection, kCells, 0);
    for (int r = redLo; r <= redHi; ++r)
        for (int g = greenLo; g <= greenHi; ++g)
            for (int b = blueLo; b <= blueHi; ++b) {
                const auto count = static_cast<std::int32_t>(histogram[r][g][b]);
                redProj[r] += count;
                greenProj[g] += count;
                blueProj[b] += count;
            }
}

short ShrinkBox(HistRange* box, const std::uint32_t histogram[32][32][32]) {
    const auto& [red, green, blue] = box->channels;
    std::int32_t projections[3][kCells];
    ProjectBox(red.lo, red.hi, green.lo, green.hi, blue.lo, blue.hi, projections[0], projections[1],
               projections[2], histogram);
    for (int c = 0; c < 3; ++c) {
        auto& range = box->channels[c];
        const std::int32_t* projection = projections[c];
        while (projection[range.lo] == 0)
            if (++range.lo > range.hi) return 0;
        while (projection[range.hi] == 0) --range.hi;

        std::int32_t total = 0;
        for (int cell = range.lo; cell <= range.hi; ++cell) total += projection[cell];
        range.median = range.lo;
        for (std::int32_t sum = projection[range.lo]; sum < (total + 1) >> 1;)
            sum += projection[++range.median];
        range.span = static_cast<std::int16_t>(range.hi - range.lo);
    }
    return 1;
}

void SplitBox(HistRange* box, HistRange* newBox, short channel,
              const std::uint32_t histogram[32][32][32]) {
    const auto& range = box->channels[channel];
    const int middle = (range.lo + range.hi) >> 1;
    // The median cell goes to the shorter side.
    const int cut = middle < range.median ? range.median : range.median + 1;
    *newBox = *box;
    newBox->channels[channel].lo = static_cast<std::int16_t>(cut);
    box->channels[channel].hi = static_cast<std::int16_t>(cut - 1);
    ShrinkBox(box, histogram);
    ShrinkBox(newBox, histogram);
}

void SortAdaptive(RGBLookUpTable* table, short first, short count) {
    SortKey keys[kLargestPalette];
    for (int i = 0; i < count; ++i) keys[i] = MakeSortKey(*table, first + i);
    std::qsort(keys, static_cast<std::size_t>(count), sizeof(SortKey), CompareAdaptive);
    const RGBLookUpTable unsorted = *table;
    for (int i = 0; i < count; ++i)
        SetTableEntry(*table, first + i, TableEntry(unsorted, keys[i].index));
}

int CompareAdaptive(const void* a, const void* b) {
    return std::memcmp(a, b, sizeof(SortKey));
}
