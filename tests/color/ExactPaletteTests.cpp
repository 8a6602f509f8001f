// Counting distinct colours, their table, and the way back from pixels to indices.
#include "ExactPalette.h"

#include "PlainExactColors.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using Colors = std::vector<PackedColor>;

// Counts rows of pixels with padding behind each, the last of them as a band of its own.
short CountRows(const std::vector<std::uint8_t>& pixels, int rows, int columns, ExactInfo& info) {
    constexpr int kPadding = 2;
    const int rowBytes = columns * 3 + kPadding;
    const auto padded = PadRows(pixels, columns * 3, kPadding);
    const auto right = static_cast<short>(20 + columns), last = static_cast<short>(10 + rows - 1);
    const Rect first = {10, 20, last, right};
    const Rect rest = {last, 20, static_cast<short>(last + 1), right};
    const short result = ExactCount(&first, rowBytes, padded.data(), &info);
    return result != 0 ? result
                       : ExactCount(&rest, rowBytes, padded.data() + (rows - 1) * rowBytes, &info);
}

short CountColors(const Colors& colors, ExactInfo& info) {
    std::vector<std::uint8_t> pixels;
    for (const PackedColor color : colors)
        for (const int shift : {16, 8, 0})
            pixels.push_back(static_cast<std::uint8_t>(color >> shift));
    return CountRows(pixels, 1, static_cast<int>(colors.size()), info);
}

TEST(ExactCount, StopsAtColor257AndKeepsTheCountOfBefore) {
    // Colours that are neither black nor white, in no particular order.
    const auto mixed = [](int count, PackedColor first) {
        Colors colors;
        for (int i = 0; i < count; ++i)
            colors.push_back((first + static_cast<PackedColor>(i) * 40503u) % 0xFFFFFF);
        std::shuffle(colors.begin(), colors.end(), std::mt19937(7));
        return colors;
    };
    ExactInfo info;
    ExactStart(&info);
    EXPECT_EQ(CountColors(mixed(255, 1), info), 1);
    EXPECT_EQ(info.count, 2);
    ExactStart(&info);
    EXPECT_EQ(CountColors(mixed(254, 1), info), 0);
    EXPECT_EQ(CountColors({0, 0xFFFFFF}, info), 0);
    EXPECT_EQ(CountColors(mixed(200, 12345), info), 1);
    EXPECT_EQ(info.count, 256);
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
        ASSERT_EQ(Colors(info.colors, info.colors + info.count), wanted);

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

TEST(ExactPalette, OfNothingIsBlackAndConvertsNothing) {
    ExactInfo info;
    ExactStart(&info);
    const std::uint8_t pixel[3] = {};
    std::uint8_t index = 77;
    for (const auto& [rows, columns] : {std::pair<short, short>{0, 1}, {-1, 1}, {1, 0}, {1, -1}})
        ExactConvert(&info, pixel, &index, rows, columns, 3, 1);
    EXPECT_EQ(index, 77);
    for (const int count : {-1, 0}) {
        info.count = count;
        RGBLookUpTable table = RandomTable(256, 1);
        MakeExactTable(&info, &table);
        EXPECT_EQ(TableColors(table), Colors(256, 0)) << "count " << count;
    }
}

} // namespace
