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
    // Both shifts round down, and an odd rest is dropped.
    const int cases[][5] = {{3, 0, 0, 1, 1},
                            {-1, 0, -1, 0, 0},
                            {-2, 0, -1, -1, -1},
                            {255, 100, 163, 196, 196},
                            {255, 32767, -32706, -32673, -32673},
                            {-255, -32768, 32704, 32672, 32672}};
    for (const auto& [error, before, behindBelow, below, ahead] : cases) {
        std::int16_t got[3];
        std::fill(std::begin(got), std::end(got), static_cast<std::int16_t>(before));
        DiffuseOut(static_cast<std::int16_t>(error), &got[0], &got[1], &got[2]);
        EXPECT_EQ(std::vector<int>(got, got + 3), (std::vector<int>{behindBelow, below, ahead}))
            << error << " on " << before;
    }
}

TEST(DiffuseIn, AppliesThreeQuartersRoundedUpAndClamps) {
    const std::tuple<std::uint8_t, std::int16_t, int> cases[] = {
        {100, 1, 101}, {100, -1, 100}, {100, -4, 97}, {0, -50, 0}, {10, 32767, 255}};
    for (const auto& [value, error, corrected] : cases)
        EXPECT_EQ(DiffuseIn(value, error), corrected) << int{value} << " with " << error;
}

// A palette with its map, and a picture's error rows.
struct Pass {
    Pass(const RGBLookUpTable& palette, int colors, int pictureColumns, int planeCount)
        : table(palette), inverse(PlainInverseMap(palette, colors)), columns(pictureColumns),
          planes(planeCount), errors(static_cast<std::size_t>(columns + 2) * 6) {}

    // Diffuses the rows of a band, with padding between the rows; what comes out is padded too.
    Bytes Rows(const Bytes& pixels, int firstRow, PackedColor transColor = 0,
               std::int32_t transIndex = 0) {
        constexpr int kSourcePadding = 5;
        const int rows = static_cast<int>(pixels.size()) / (columns * planes);
        const Bytes spaced = PadRows(pixels, columns * planes, kSourcePadding);
        // None behind the last row, so that nobody reads on unnoticed.
        const Bytes source(spaced.begin(), spaced.end() - kSourcePadding);
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
        return padded;
    }
    Bytes Padded(const Bytes& indices) const { return PadRows(indices, columns, kPadding); }

    static constexpr int kPadding = 3;
    RGBLookUpTable table;
    Bytes inverse;
    int columns, planes;
    std::vector<std::int16_t> errors;
};

RGBLookUpTable BlackAndWhite() {
    RGBLookUpTable table = {};
    SetTableEntry(table, 1, {0, 255, 255, 255});
    return table;
}

// Levels that drive errors as far as they go; opacity is mixed.
Bytes ExtremePixels(int rows, int columns, int planes, std::mt19937& random) {
    const auto pattern = random() % 4;
    Bytes pixels;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            for (int p = 0; p < planes; ++p) {
                const bool high[] = {false, true, (x + y) % 2 == 0, random() % 2 == 0};
                constexpr std::uint8_t kOpacities[] = {0, 1, 128, 254, 255, 255};
                pixels.push_back(p == 3 ? kOpacities[random() % 6] : high[pattern] ? 255 : 0);
            }
    return pixels;
}

TEST(DiffuseColor, AgreesWithThePlainOneInEverySizeAndBand) {
    constexpr int kColors[] = {1, 2, 3, 16, 255, 256}, kBandRows[] = {1, 2, 3, 5, 99};
    for (std::uint32_t seed = 1; seed <= 800; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
        const int rows = 1 + below(14), columns = 1 + below(seed % 4 == 0 ? 300 : 9);
        const int planes = 3 + below(2), colors = kColors[below(6)];
        const int bandRows = kBandRows[below(5)];
        const bool wild = below(4) == 0; // start with errors that wrap
        const bool gaps = below(3) == 0;
        const PackedColor transColor = random() & 0xFFFFFF;
        const auto transIndex = static_cast<std::uint8_t>(random());
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Bytes pixels =
            below(4) == 0 ? ExtremePixels(rows, columns, planes, random)
                          : RandomPixels(kPictureKinds[below(4)], rows, columns, planes, seed);

        Pass pass(below(8) == 0 ? BlackAndWhite() : RandomTable(colors, seed), colors, columns,
                  planes);
        PlainDiffusion plain(pass.table, pass.inverse, columns, planes, transColor, transIndex);
        if (wild)
            for (auto& error : pass.errors)
                error = static_cast<std::int16_t>(below(2) == 0 ? 32700 + below(68) : below(65536));
        plain.errors = pass.errors;

        for (int top = 0, height = 0; top < rows; top += height) {
            height = std::min(rows - top, bandRows);
            const auto from = pixels.begin() + std::ptrdiff_t{top} * columns * planes;
            const Bytes band(from, from + std::ptrdiff_t{height} * columns * planes);
            // Of the index only the low byte counts.
            ASSERT_EQ(pass.Rows(band, top, transColor, 0x5500 | transIndex),
                      pass.Padded(plain.Rows(band.data(), top, height)))
                << "rows " << top << " to " << top + height;
            ASSERT_EQ(pass.errors, plain.errors) << "below row " << top + height - 1;
            top += gaps && below(2) == 0 ? 1 : 0; // now and then a row is left out
        }
    }
}

} // namespace
