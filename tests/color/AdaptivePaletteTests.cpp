// The histogram passes and the median cut.
#include "AdaptivePalette.h"

#include "Composite.h"
#include "Histogram.h"
#include "PlainAdaptivePalette.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using Colors = std::vector<PackedColor>;
using Counts = std::vector<std::uint32_t>;

Histogram& Cells(Counts& counts) {
    return *reinterpret_cast<Histogram*>(counts.data());
}

TEST(Composite, RoundsToTheNearestLevelOneByOneAndAllAtOnce) {
    for (const int below : {0, 1, 127, 128, 193, 254, 255})
        for (int alpha = 1; alpha < 256; ++alpha)
            for (int level = 0; level < 256; ++level) {
                const std::uint8_t pixel[4] = {static_cast<std::uint8_t>(level), 0, 255,
                                               static_cast<std::uint8_t>(alpha)};
                const RGBtuple under = UnpackColor(static_cast<PackedColor>(below) * 0x010101);
                const PackedColor wanted = PackColor(PlainOver(pixel, under));
                ASSERT_EQ(PackColor(CompositePixel(pixel, under)), wanted)
                    << level << " over " << below << " with opacity " << alpha;
                const auto bytes = static_cast<std::uint32_t>(level | 255 << 16) |
                                   static_cast<std::uint32_t>(alpha) << 24;
                std::int16_t mixed[4];
                CompositePixel(PixelVector::Widen(bytes), PixelVector::Splat(below))
                    .StoreFour(mixed);
                const auto byte = [&mixed](int i) { return static_cast<std::uint8_t>(mixed[i]); };
                ASSERT_EQ(PackRGB(byte(0), byte(1), byte(2)), wanted)
                    << level << " over " << below << " with opacity " << alpha << ", all at once";
            }
}

TEST(Histogram, CountsWhatThePlainOneCounts) {
    constexpr short kRows = 9, kColumns = 31, kPadding = 3;
    for (std::uint32_t seed = 1; seed <= 24; ++seed)
        for (const int planes : {3, 4}) {
            const PackedColor below = seed * 0x2A4D31 & 0xFFFFFF;
            const auto pixels =
                RandomPixels(kPictureKinds[seed % 4], kRows, kColumns, planes, seed);
            const int rowBytes = kColumns * planes + kPadding;
            const auto padded = PadRows(pixels, kColumns * planes, kPadding);
            Counts counts(32768);
            HistInfo info = {&Cells(counts), below};
            for (const auto& [top, bottom] : {std::pair<short, short>{0, 4}, {4, kRows}, {3, 3}}) {
                const Rect band = {top, 5, bottom, 5 + kColumns};
                const std::uint8_t* data = padded.data() + top * rowBytes;
                EXPECT_EQ(planes == 3
                              ? CalcHistogram3DNoTransparency(&band, rowBytes, data, Cells(counts))
                              : CalcHistogram3DWithTransparency(&band, rowBytes, data, &info),
                          0);
            }
            ASSERT_EQ(counts, PlainHistogram(pixels, planes, below)) << "seed " << seed;
        }
}

Colors PaletteOf(Counts counts, int colors) {
    RGBLookUpTable table = RandomTable(256, 5);
    MakeAdaptivePalette(&table, static_cast<short>(colors), Cells(counts));
    return TableColors(table);
}

TEST(MakeAdaptivePalette, AgreesWithThePlainCut) {
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
        const auto pixels =
            RandomPixels(kPictureKinds[seed % 4], 1 + below(90), 1 + below(90), 3, seed);
        Counts histogram = PlainHistogram(pixels, 3);
        if (seed % 10 == 0) // as many pixels as the largest picture has
            for (auto& count : histogram) count *= 32767u * 32767u / 8100;
        for (const int colors : {0, 2, 3, 4, 5, 16, 3 + below(253), 255, 256})
            ASSERT_EQ(PaletteOf(histogram, colors),
                      TableColors(PlainAdaptivePalette(histogram, colors)))
                << colors << " colours, seed " << seed;
        EXPECT_EQ(PaletteOf(histogram, 300), PaletteOf(histogram, 256))
            << "more than a table holds";
    }
}

} // namespace
