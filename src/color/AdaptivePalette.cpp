// The median cut and the order of the palette it yields.
#include "AdaptivePalette.h"

#include "HSVColor.h"
#include "PixelVector.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr int kCells = 32; // along each channel
constexpr int kLargestPalette = 256;
constexpr RGBtuple kWhite = {0, 255, 255, 255};

// Calls `call` once for each number of the sequence, passed as a compile-time constant. An array
// that `call` indexes with it can stay in registers.
template <std::size_t... kNumber, class Call>
void ForEachOf(std::index_sequence<kNumber...>, Call call) {
    (call(std::integral_constant<std::size_t, kNumber>{}), ...);
}

// ProjectBox for a box whose blue cells lie in kGroups groups of four. The four counts of a group
// are added with one vector addition; cells outside the box count as zero. Each sum is kept as four
// partial sums, which are added up at the end. This is faster than adding every count to three sums
// in memory.
template <std::size_t kGroups>
void ProjectGroups(int redLo, int redHi, int greenLo, int greenHi, int blueLo, int blueHi,
                   std::int32_t* redProj, std::int32_t* greenProj, std::int32_t* blueProj,
                   const std::uint32_t histogram[32][32][32]) {
    const int firstCell = blueLo / 4 * 4, lastGroup = blueHi / 4 * 4;
    const CountVector fromLo = CountVector::Range(blueLo - firstCell, 3);
    const CountVector upToHi = CountVector::Range(0, blueHi - lastGroup);
    CountVector blueSums[kGroups], greenSums[kCells];
    constexpr auto kEach = std::make_index_sequence<kGroups>{};
    ForEachOf(kEach, [&](auto k) { blueSums[k] = CountVector::Zero(); });
    for (int g = greenLo; g <= greenHi; ++g) greenSums[g] = CountVector::Zero();

    for (int r = redLo; r <= redHi; ++r) {
        CountVector redSum = CountVector::Zero();
        for (int g = greenLo; g <= greenHi; ++g) {
            const std::uint32_t* row = histogram[r][g] + firstCell;
            CountVector rowSum = CountVector::Zero();
            ForEachOf(kEach, [&](auto k) {
                CountVector counts = CountVector::Load(row + 4 * k);
                if (k == 0) counts = counts & fromLo;
                if (k == kGroups - 1) counts = counts & upToHi;
                blueSums[k] = blueSums[k] + counts;
                rowSum = rowSum + counts;
            });
            greenSums[g] = greenSums[g] + rowSum;
            redSum = redSum + rowSum;
        }
        redProj[r] = redSum.Sum();
    }
    for (int g = greenLo; g <= greenHi; ++g) greenProj[g] = greenSums[g].Sum();
    ForEachOf(kEach, [&](auto k) { blueSums[k].Store(blueProj + firstCell + 4 * k); });
}

// Cuts boxes until there are `target` of them. The box with the longest side is cut next, however
// many pixels it holds. Ties go to the earlier box, then to red before green before blue. A cut
// never makes a side longer, so it is enough to walk over the growing list once for each length,
// from the longest down: this finds the sides in the same order as a search through all boxes
// before every cut, and is faster.
int CutBoxes(HistRange* boxes, int target, const std::uint32_t histogram[32][32][32]) {
    int made = 1;
    for (int span = kCells - 1; span > 0; --span) // boxes of single cells stay as they are
        for (int i = 0; i < made; ++i)
            for (short c = 0; c < 3; ++c)
                if (boxes[i].channels[c].span == span) {
                    if (made >= target) return made;
                    SplitBox(&boxes[i], &boxes[made++], c, histogram);
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
    constexpr decltype(&ProjectGroups<1>) kProjectGroups[] = {
        ProjectGroups<1>, ProjectGroups<2>, ProjectGroups<3>, ProjectGroups<4>,
        ProjectGroups<5>, ProjectGroups<6>, ProjectGroups<7>, ProjectGroups<8>};
    kProjectGroups[blueHi / 4 - blueLo / 4](redLo, redHi, greenLo, greenHi, blueLo, blueHi, redProj,
                                            greenProj, blueProj, histogram);
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
