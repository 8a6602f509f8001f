// Counting distinct colours, their table, and the way back from pixels to indices.
#include "ExactPalette.h"

#include "PlainExactColors.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using Colors = std::vector<PackedColor>;

std::vector<std::uint8_t> PixelsOf(const Colors& colors) {
    std::vector<std::uint8_t> pixels;
    for (const PackedColor color : colors) {
        const RGBtuple c = UnpackColor(color);
        pixels.insert(pixels.end(), {c.red, c.green, c.blue});
    }
    return pixels;
}

// Colours that are neither black nor white, in no particular order.
Colors MixedColors(int count, PackedColor first = 1) {
    Colors colors;
    for (int i = 0; i < count; ++i)
        colors.push_back((first + static_cast<PackedColor>(i) * 40503u) % 0xFFFFFF);
    std::shuffle(colors.begin(), colors.end(), std::mt19937(7));
    return colors;
}

// Counts rows of pixels with padding behind each.
short CountRows(const std::vector<std::uint8_t>& pixels, int rows, int columns, ExactInfo& info) {
    constexpr int kPadding = 2;
    const auto padded = PadRows(pixels, columns * 3, kPadding);
    const Rect area = {10, 20, static_cast<short>(10 + rows), static_cast<short>(20 + columns)};
    return ExactCount(&area, columns * 3 + kPadding, padded.data(), &info);
}

short CountColors(const Colors& colors, ExactInfo& info) {
    return CountRows(PixelsOf(colors), 1, static_cast<int>(colors.size()), info);
}

Colors Counted(const ExactInfo& info) {
    return {info.colors, info.colors + info.count};
}

TEST(ExactCount, RecordsEachColorOnceWithWhiteAndBlack) {
    const Colors mixed = MixedColors(254);
    Colors all = mixed;
    all.insert(all.end(), {0x000000, 0xFFFFFF});
    std::sort(all.rbegin(), all.rend());
    const struct {
        const char* name;
        std::vector<Colors> bands;
        Colors wanted;
    } cases[] = {
        {"no pixels", {{}}, {0xFFFFFF, 0x000000}},
        {"one grey", {Colors(9, 0x808080)}, {0xFFFFFF, 0x808080, 0x000000}},
        {"black", {Colors(9, 0x000000)}, {0xFFFFFF, 0x000000}},
        {"white", {Colors(9, 0xFFFFFF)}, {0xFFFFFF, 0x000000}},
        {"next to black and white", {{1, 0xFFFFFE}}, {0xFFFFFF, 0xFFFFFE, 1, 0x000000}},
        {"again in a later band", {{1, 2}, {2, 3}, {1}}, {0xFFFFFF, 3, 2, 1, 0x000000}},
        {"254 beside white and black", {mixed, {0x000000, 0xFFFFFF}, mixed}, all},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ExactInfo info;
        ExactStart(&info);
        for (const Colors& band : c.bands) {
            EXPECT_EQ(CountColors(band, info), 0);
        }
        EXPECT_EQ(Counted(info), c.wanted);
        EXPECT_TRUE(std::all_of(info.colors + info.count, info.colors + 256,
                                [](std::int32_t color) { return color == -1; }));
    }
}

TEST(ExactCount, StopsAtColor257AndKeepsTheCountOfBefore) {
    ExactInfo info;
    ExactStart(&info);
    EXPECT_EQ(CountColors(MixedColors(255), info), 1);
    EXPECT_EQ(info.count, 2);

    ExactStart(&info);
    EXPECT_EQ(CountColors(MixedColors(200), info), 0);
    EXPECT_EQ(CountColors(MixedColors(200, 12345), info), 1);
    EXPECT_EQ(info.count, 202);
}

TEST(ExactPalette, AgreesWithASetAndALinearSearch) {
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const int rows = 1 + static_cast<int>(random() % 12);
        const int columns = 1 + static_cast<int>(random() % 30);
        auto pixels = RandomPixels(kPictureKinds[seed % 4], rows, columns, 3, seed);
        if (seed % 3 == 0) // colours that differ in single bits
            for (auto& level : pixels) level &= 0x81;
        const Colors wanted = PlainExactColors(pixels);
        ExactInfo info;
        ExactStart(&info);
        ASSERT_EQ(CountRows(pixels, rows, columns, info), wanted.size() > 256 ? 1 : 0);
        if (wanted.size() > 256) continue;
        ASSERT_EQ(Counted(info), wanted);

        RGBLookUpTable table = RandomTable(256, seed);
        MakeExactTable(&info, &table);
        Colors entries = wanted;
        entries.resize(256, 0);
        ASSERT_EQ(TableColors(table), entries);

        const auto absent = RandomPixels(PictureKind::noise, rows, columns, 3, seed + 1);
        for (const auto& source : {pixels, absent}) {
            const auto padded = PadRows(source, columns * 3, 7);
            std::vector<std::uint8_t> indices(static_cast<std::size_t>(rows * (columns + 3)), 0xA5);
            ExactConvert(&info, padded.data(), indices.data(), static_cast<short>(rows),
                         static_cast<short>(columns), columns * 3 + 7, columns + 3);
            ASSERT_EQ(indices, PadRows(PlainExactIndices(wanted, source), columns, 3));
        }
    }
}

TEST(MakeExactTable, IsBlackWithoutACount) {
    for (const int count : {-1, 0}) {
        ExactInfo info;
        ExactStart(&info);
        info.count = count;
        RGBLookUpTable table = RandomTable(256, 1);
        MakeExactTable(&info, &table);
        EXPECT_EQ(TableColors(table), Colors(256, 0)) << "count " << count;
    }
}

TEST(ExactConvert, LeavesTheIndicesAloneWithoutRowsOrColumns) {
    ExactInfo info;
    ExactStart(&info);
    const std::uint8_t pixel[3] = {};
    for (const auto& [rows, columns] : {std::pair{0, 1}, {-1, 1}, {1, 0}, {1, -1}}) {
        std::uint8_t index = 77;
        ExactConvert(&info, pixel, &index, static_cast<short>(rows), static_cast<short>(columns), 3,
                     1);
        EXPECT_EQ(index, 77) << rows << " x " << columns;
    }
}

} // namespace
