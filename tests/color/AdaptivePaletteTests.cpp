// The histogram passes and the median cut.
#include "AdaptivePalette.h"

#include "Composite.h"
#include "PlainAdaptivePalette.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <numeric>
#include <random>

namespace {

using Colors = std::vector<PackedColor>;

// A histogram on the heap that can be compared.
struct Cells {
    std::unique_ptr<std::uint32_t[]> counts = std::make_unique<std::uint32_t[]>(32768);
    Histogram& histogram = *reinterpret_cast<Histogram*>(counts.get());
};

TEST(Composite, RoundsToTheNearestLevel) {
    for (const int below : {0, 1, 127, 128, 193, 254, 255})
        for (int alpha = 1; alpha < 256; ++alpha)
            for (int level = 0; level < 256; ++level) {
                const std::uint8_t pixel[4] = {static_cast<std::uint8_t>(level), 0, 255,
                                               static_cast<std::uint8_t>(alpha)};
                const RGBtuple under = UnpackColor(static_cast<PackedColor>(below) * 0x010101);
                ASSERT_EQ(PackColor(CompositePixel(pixel, under)),
                          PackColor(PlainOver(pixel, PackColor(under))))
                    << level << " over " << below << " with opacity " << alpha;
            }
}

TEST(Histogram, CountsWhatThePlainOneCounts) {
    for (std::uint32_t seed = 1; seed <= 24; ++seed) {
        const PackedColor below = seed * 0x2A4D31 & 0xFFFFFF;
        constexpr int kRows = 9, kColumns = 31, kPadding = 3;
        for (const int planes : {3, 4}) {
            const auto pixels =
                RandomPixels(kPictureKinds[seed % 4], kRows, kColumns, planes, seed);
            const int rowBytes = kColumns * planes + kPadding;
            const auto padded = PadRows(pixels, kColumns * planes, kPadding);
            Cells cells;
            HistInfo info = {&cells.histogram, below};
            for (const Rect& band : {Rect{0, 5, 4, 5 + kColumns}, Rect{4, 5, kRows, 5 + kColumns},
                                     Rect{3, 5, 3, 5 + kColumns}}) {
                const std::uint8_t* data = padded.data() + band.top * rowBytes;
                const short code =
                    planes == 3
                        ? CalcHistogram3DNoTransparency(&band, rowBytes, data, cells.histogram)
                        : CalcHistogram3DWithTransparency(&band, rowBytes, data, &info);
                EXPECT_EQ(code, 0);
            }
            const std::vector<std::uint32_t> got(cells.counts.get(), cells.counts.get() + 32768);
            ASSERT_EQ(got, PlainHistogram(pixels, planes, below)) << "seed " << seed;
        }
    }
}

Colors PaletteOf(const std::vector<std::uint32_t>& counts, int colors) {
    Cells cells;
    std::memcpy(cells.histogram, counts.data(), sizeof cells.histogram);
    RGBLookUpTable table = RandomTable(256, 5);
    MakeAdaptivePalette(&table, static_cast<short>(colors), cells.histogram);
    return TableColors(table);
}

TEST(MakeAdaptivePalette, GivesTheseColors) {
    struct Count {
        int red, green, blue;
        std::uint32_t pixels;
    };
    const struct {
        const char* name;
        int colors;
        std::vector<Count> cells;
        Colors boxes; // between white and black
    } cases[] = {
        {"no pixels", 16, {}, {}},
        {"one colour", 16, {{25, 12, 6, 9}}, {0xCE6331}},
        {"black and white alone", 16, {{0, 0, 0, 5}, {31, 31, 31, 5}}, {}},
        {"black and white do not weigh",
         3,
         {{0, 0, 0, 5}, {10, 10, 10, 1}, {31, 31, 31, 5}},
         {0x525252}},
        {"two colours leave no box", 2, {{25, 12, 6, 9}}, {}},
        {"three colours are one box", 3, {{4, 4, 4, 1}, {8, 4, 4, 2}}, {0x422121}},
        {"half of an even count is reached below", 3, {{4, 4, 4, 2}, {8, 4, 4, 2}}, {0x212121}},
        {"half of an odd count is rounded up",
         3,
         {{4, 4, 4, 1}, {6, 4, 4, 1}, {8, 4, 4, 1}},
         {0x312121}},
        // Cut along red: 4 8 0 and 4 4 0 stay together. Sorted by hue.
        {"red is cut before green",
         4,
         {{4, 8, 0, 1}, {8, 4, 0, 1}, {4, 4, 0, 3}},
         {0x422100, 0x212100}},
        {"green is cut before blue",
         4,
         {{0, 4, 8, 1}, {0, 8, 4, 1}, {0, 4, 4, 3}},
         {0x004221, 0x002121}},
        // Both halves of the first cut have a span of 4; only the earlier is cut again.
        {"the earlier box is cut first",
         5,
         {{4, 4, 4, 9}, {4, 8, 4, 1}, {20, 4, 4, 9}, {20, 8, 4, 1}},
         {0x212121, 0xA52121, 0x214221}},
        {"the longest side is cut, not the fullest box",
         5,
         {{4, 4, 4, 1000}, {6, 4, 4, 1000}, {20, 4, 4, 1}, {28, 4, 4, 1}},
         {0x212121, 0xA52121, 0xE72121}},
    };
    for (const auto& c : cases) {
        std::vector<std::uint32_t> counts(32768);
        for (const auto& [red, green, blue, pixels] : c.cells)
            counts[static_cast<std::size_t>(red * 1024 + green * 32 + blue)] = pixels;
        Colors wanted = {0xFFFFFF};
        wanted.insert(wanted.end(), c.boxes.begin(), c.boxes.end());
        auto got = PaletteOf(counts, c.colors);
        wanted.resize(256, 0);
        EXPECT_EQ(got, wanted) << c.name;
    }
}

TEST(MakeAdaptivePalette, AgreesWithListsOfCells) {
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        const auto pixels =
            RandomPixels(kPictureKinds[seed % 4], 1 + static_cast<int>(random() % 90),
                         1 + static_cast<int>(random() % 90), 3, seed);
        const auto histogram = PlainHistogram(pixels, 3);
        const int few = 3 + static_cast<int>(random() % 253);
        for (const int colors : {0, 2, 3, 4, 5, 16, few, 255, 256})
            ASSERT_EQ(PaletteOf(histogram, colors),
                      TableColors(PlainAdaptivePalette(histogram, colors)))
                << colors << " colours, seed " << seed;
    }
}

TEST(MakeAdaptivePalette, CountsTheLargestPicture) {
    std::mt19937 random(3);
    std::vector<std::uint32_t> counts(32768);
    constexpr std::uint32_t kPixels = 32767u * 32767u;
    counts[5000] = kPixels / 2;
    for (int i = 0; i < 1000; ++i) counts[1 + random() % 32766] += kPixels / 2000;
    ASSERT_LE(std::accumulate(counts.begin(), counts.end(), std::uint64_t{0}), kPixels);
    EXPECT_EQ(PaletteOf(counts, 64), TableColors(PlainAdaptivePalette(counts, 64)));
    EXPECT_EQ(PaletteOf(counts, 300), PaletteOf(counts, 256)) << "more than a palette holds";
}

TEST(SortAdaptive, SortsByHueSaturationAndValueAndLeavesTheRest) {
    const Colors unsorted = {0xFFFFFF, 0x0000FF, 0xFF8080, 0x808080, 0x404040,
                             0xFF0000, 0x800000, 0x00FF00, 0x123456};
    // Greys have no hue and no saturation; a pale red is less saturated than a full one.
    const Colors sorted = {0xFFFFFF, 0x404040, 0x808080, 0xFF8080, 0x800000,
                           0xFF0000, 0x00FF00, 0x0000FF, 0x123456};
    RGBLookUpTable table = {};
    for (int i = 0; i < 9; ++i)
        SetTableEntry(table, i, UnpackColor(unsorted[static_cast<std::size_t>(i)]));
    SortAdaptive(&table, 1, 7);
    EXPECT_EQ(TableColors(table, 9), sorted);
}

} // namespace
