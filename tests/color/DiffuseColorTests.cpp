// Error diffusion: its arithmetic, its directions, bands and opacity.
#include "DiffuseColor.h"

#include "PlainDiffusion.h"
#include "PlainInverseMap.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(DiffuseOut, SplitsByArithmeticShiftsAndWraps) {
    const struct {
        int error, before, behindBelow, below, ahead;
    } cases[] = {
        {0, 9, 9, 9, 9},
        {4, 0, 1, 1, 1},     // an odd rest is dropped
        {3, 0, 0, 1, 1},     //
        {-1, 0, -1, 0, 0},   // the quarter of -1 is -1
        {-2, 0, -1, -1, -1}, // half of -1 is -1
        {255, 100, 163, 196, 196},
        {-255, 100, 36, 4, 4},
        {255, 32767, -32706, -32673, -32673},
        {-255, -32768, 32704, 32672, 32672},
    };
    for (const auto& c : cases) {
        auto behindBelow = static_cast<std::int16_t>(c.before);
        std::int16_t below = behindBelow, ahead = behindBelow;
        DiffuseOut(static_cast<std::int16_t>(c.error), &behindBelow, &below, &ahead);
        EXPECT_EQ(behindBelow, c.behindBelow) << c.error << " on " << c.before;
        EXPECT_EQ(below, c.below) << c.error << " on " << c.before;
        EXPECT_EQ(ahead, c.ahead) << c.error << " on " << c.before;
    }
}

TEST(DiffuseIn, AppliesThreeQuartersRoundedUpAndClamps) {
    const struct {
        int value, error, corrected;
    } cases[] = {{100, 0, 100}, {100, 4, 103},   {100, 1, 101},    {100, -1, 100},  {100, -4, 97},
                 {0, -50, 0},   {250, 200, 255}, {10, 32767, 255}, {250, -32768, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(DiffuseIn(static_cast<std::uint8_t>(c.value), static_cast<std::int16_t>(c.error)),
                  c.corrected)
            << c.value << " with " << c.error;
}

// A palette with its map, and a picture's error rows.
struct Pass {
    Pass(const RGBLookUpTable& palette, int colors, int pictureColumns, int planeCount)
        : table(palette), inverse(PlainInverseMap(palette, colors)), columns(pictureColumns),
          planes(planeCount), errors(static_cast<std::size_t>(columns + 2) * 6) {}

    // Diffuses the rows of a band, with padding behind the rows on both sides.
    Bytes Rows(const Bytes& pixels, int firstRow, PackedColor transColor = 0,
               std::int32_t transIndex = 0) {
        constexpr int kSourcePadding = 5, kPadding = 3;
        const int rows = static_cast<int>(pixels.size()) / (columns * planes);
        const Bytes source = PadRows(pixels, columns * planes, kSourcePadding);
        Bytes padded(static_cast<std::size_t>(rows * (columns + kPadding)), 0xA5);
        const auto height = static_cast<short>(rows), width = static_cast<short>(columns),
                   top = static_cast<short>(firstRow);
        const int rowBytes = columns * planes + kSourcePadding;
        if (planes == 3)
            DiffuseColorNoTransparency(source.data(), padded.data(), height, width, top, rowBytes,
                                       columns + kPadding, &table, inverse.data(), errors.data());
        else
            DiffuseColorWithTransparency(source.data(), padded.data(), height, width, top, rowBytes,
                                         columns + kPadding, &table, inverse.data(), errors.data(),
                                         transColor, transIndex);
        Bytes indices;
        for (auto row = padded.begin(); row != padded.end(); row += columns + kPadding) {
            indices.insert(indices.end(), row, row + columns);
            EXPECT_EQ(Bytes(row + columns, row + columns + kPadding), Bytes(kPadding, 0xA5));
        }
        return indices;
    }

    RGBLookUpTable table;
    Bytes inverse;
    int columns, planes;
    std::vector<std::int16_t> errors;
};

RGBLookUpTable Greys(std::initializer_list<std::uint8_t> levels) {
    RGBLookUpTable table = {};
    int i = 0;
    for (const std::uint8_t level : levels) SetTableEntry(table, i++, {0, level, level, level});
    return table;
}

TEST(DiffuseColor, TurnsEverySecondRow) {
    // The first 100 in the scan becomes black and lifts the second to 100 + 37 - 9, just white.
    const auto table = Greys({0, 255});
    for (const int row : {0, 1, 2, 3, 4, 5, 6, 7, 32766}) {
        Pass pass(table, 2, 2, 3);
        const Bytes wanted = row / 2 % 2 == 0 ? Bytes{0, 1} : Bytes{1, 0};
        EXPECT_EQ(pass.Rows(Bytes(6, 100), row), wanted) << "row " << row;
    }
}

TEST(DiffuseColor, LeavesNoErrorOnAColorOfThePalette) {
    Pass pass(Greys({0, 100, 255}), 3, 7, 3);
    EXPECT_EQ(pass.Rows(Bytes(7 * 3 * 5, 100), 0), Bytes(35, 1));
    EXPECT_EQ(pass.errors, std::vector<std::int16_t>(pass.errors.size(), 0));
}

TEST(DiffuseColor, TransparentPixelsTakeNoPart) {
    Pass pass(Greys({0, 255}), 2, 3, 4);
    std::fill(pass.errors.begin(), pass.errors.end(), std::int16_t{50});
    EXPECT_EQ(pass.Rows({10, 20, 30, 0, 200, 100, 0, 0, 1, 1, 1, 0}, 0, 0xC0C0C0, 0x1FE),
              Bytes(3, 0xFE)); // only the low byte is an index
    std::vector<std::int16_t> wanted(15, 50);
    wanted.resize(30, 0); // the next row is cleared all the same
    EXPECT_EQ(pass.errors, wanted);
}

// Bands of random height; now and then a row between them is left out.
template <class Visit> void ForEachBand(int rows, std::mt19937& random, bool gaps, Visit visit) {
    for (int top = 0; top < rows;) {
        const int height = std::min(rows - top, 1 + static_cast<int>(random() % 6));
        visit(top, height);
        top += height + (gaps && random() % 2 == 0 ? 1 : 0);
    }
}

TEST(DiffuseColor, AgreesWithAWholeFieldOfErrors) {
    constexpr std::pair<int, int> kSizes[] = {{1, 1}, {1, 33}, {33, 1}, {2, 2}, {17, 23}, {40, 64}};
    constexpr int kColors[] = {1, 2, 3, 16, 255, 256};
    for (std::uint32_t seed = 1; seed <= 240; ++seed) {
        std::mt19937 random(seed);
        const int rows = kSizes[seed % 6].first, columns = kSizes[seed % 6].second;
        const int planes = 3 + static_cast<int>(random() % 2);
        const int colors = kColors[random() % 6];
        const bool wild = random() % 4 == 0; // start with errors that wrap
        const bool gaps = random() % 2 == 0;
        const PackedColor transColor = random() & 0xFFFFFF;
        const auto transIndex = static_cast<std::uint8_t>(random());
        SCOPED_TRACE("seed " + std::to_string(seed));
        const auto pixels = RandomPixels(kPictureKinds[random() % 4], rows, columns, planes, seed);

        Pass pass(RandomTable(colors, seed), colors, columns, planes);
        PlainDiffusion plain(pass.table, pass.inverse, columns, planes, transColor, transIndex);
        auto& first = plain.errors[0];
        first.resize(static_cast<std::size_t>(columns + 2));
        for (std::size_t i = 0; wild && i < first.size() * 3; ++i)
            first[i / 3][i % 3] = pass.errors[i] =
                static_cast<std::int16_t>(random() % 2 ? 32700 + random() % 68 : random());

        ForEachBand(rows, random, gaps, [&](int top, int height) {
            const auto from = pixels.begin() + std::ptrdiff_t{top} * columns * planes;
            const Bytes band(from, from + std::ptrdiff_t{height} * columns * planes);
            ASSERT_EQ(pass.Rows(band, top, transColor, transIndex),
                      plain.Rows(band.data(), top, height))
                << "rows " << top << " to " << top + height;
        });
        if (HasFatalFailure()) return;
    }
}

} // namespace
