// What reduced pictures promise, on seeded pictures.
#include "FirstDifference.h"
#include "PlainReduce.h"
#include "RandomPictures.h"
#include "Reduce.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace gif89 {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr Dithering kDitherings[] = {Dithering::none, Dithering::diffusion, Dithering::ordered,
                                     Dithering::blueNoise};

Palette PaletteOf(const RGBLookUpTable& table, int colors) {
    Palette palette;
    for (const PackedColor color : TableColors(table, colors))
        palette.push_back(Color::Unpack(color));
    return palette;
}

Bytes IndicesOf(const Reduced& reduced, const Pixels& pixels) {
    return Bytes(reduced.indices.get(), reduced.indices.get() + pixels.Count());
}

// A row of colours that all differ, each twice.
Bytes DifferentColors(int count) {
    Bytes bytes;
    for (int n = 0; n < 2 * count; ++n)
        for (const int level : {n / 2 * 7 % 256, n / 2 * 3 % 256, n / 2 / 256 * 5})
            bytes.push_back(static_cast<std::uint8_t>(level));
    return bytes;
}

TEST(Reduce, MakesAsManyEntriesAsAreAskedFor) {
    const Bytes bytes = RandomPixels(PictureKind::photo, 97, 131, 4, 1);
    Bytes greys(3 * 207);
    for (std::size_t n = 0; n < greys.size(); ++n) greys[n] = static_cast<std::uint8_t>(n / 3 + 20);
    for (const int entries : {2, 3, 16, 200, 255, 256}) {
        const Reduced reduced = Reduce({bytes.data(), 97, 131, 4, 128}, {.entries = entries});
        EXPECT_EQ(reduced.palette.size(), static_cast<std::size_t>(entries));
        EXPECT_EQ(reduced.transparent, entries - 1) << "the transparent one counts";
        const Reduced grey = Reduce({greys.data(), 1, 207, 3}, {.entries = entries});
        std::set<std::uint32_t> different;
        for (const Color& color : grey.palette) different.insert(color.Packed());
        EXPECT_EQ(different.size(), static_cast<std::size_t>(std::min(entries, 207)));
    }
}

TEST(Reduce, KeepsAPictureThatFitsAndChangesOnlyWhatMustBeMerged) {
    for (const Dithering dithering : kDitherings)
        for (const int colors : {1, 255, 256, 257, 300}) {
            const Bytes bytes = DifferentColors(colors);
            const Pixels pixels = {bytes.data(), 1, 2 * colors, 3};
            const Reduced reduced = Reduce(pixels, {.dithering = dithering});
            EXPECT_EQ(reduced.exact, colors <= 256);
            EXPECT_EQ(reduced.palette.size(), static_cast<std::size_t>(std::min(colors, 256)));
            int changed = 0;
            for (int n = 0; n < 2 * colors; ++n) {
                const std::uint8_t* const was = &bytes[static_cast<std::size_t>(3 * n)];
                const Color is = reduced.palette[reduced.indices[static_cast<std::size_t>(n)]];
                changed += is != Color{was[0], was[1], was[2]};
            }
            // Two colours share each entry too few, and each occurs twice.
            EXPECT_LE(changed, std::max(colors - 256, 0) * 4) << colors << " colours";
        }
}

TEST(Reduce, TakesTheNearestEntryWithoutDithering) {
    for (const int colors : {1, 2, 17, 256}) {
        const Bytes bytes = RandomPixels(PictureKind::noise, 61, 67, 3, 5);
        Palette palette = PaletteOf(RandomTable(colors, 3), colors);
        palette.back() = palette.front(); // the lower of two equal ones is taken
        const int hidden = colors > 2 ? 1 : -1;
        const Target target = {palette, hidden};
        Bytes indices(61 * 67);
        MapPixels({bytes.data(), 61, 67, 3}, target, Dithering::none, 100, indices.data());
        for (std::size_t n = 0; n < indices.size(); ++n)
            ASSERT_EQ(indices[n],
                      PlainNearest(target, bytes[3 * n], bytes[3 * n + 1], bytes[3 * n + 2]))
                << "pixel " << n << " of " << colors << " colours";
    }
}

TEST(Reduce, DiffusesAsThePlainVersionDoes) {
    for (const PictureKind kind : kPictureKinds)
        for (const int planes : {3, 4})
            for (const auto& [rows, columns] :
                 {std::pair{1, 1}, {3, 2}, {4, 1}, {9, 5}, {31, 64}}) {
                const Bytes bytes = RandomPixels(kind, rows, columns, planes, 7);
                const Pixels pixels = {bytes.data(), rows, columns, planes, 128};
                for (const int colors : {2, 30, 256}) {
                    Palette palette = PaletteOf(RandomTable(colors, 9), colors);
                    palette[0] = {bytes[0], bytes[1], bytes[2]};
                    const Target target = {palette, colors - 1};
                    Bytes indices(pixels.Count());
                    DiffusePixels(pixels, target, 70, indices.data());
                    EXPECT_EQ(FirstDifference(indices, PlainDiffusePixels(pixels, target, 70)), "")
                        << rows << " x " << columns << ", " << colors << " colours";
                }
            }
}

TEST(Reduce, LeavesNoHolesAndKeepsTheMeanColor) {
    const Bytes bytes = RandomPixels(PictureKind::photo, 80, 90, 4, 11);
    const Pixels pixels = {bytes.data(), 80, 90, 4, 128};
    const Palette black = {{}, {}, {200, 10, 10}};
    for (const Dithering dithering : kDitherings)
        for (const Reduction& how :
             {Reduction{.entries = 2}, Reduction{.entries = 16},
              Reduction{.entries = 3, .given = black}, Reduction{.given = WebPalette()}}) {
            Reduction dithered = how;
            dithered.dithering = dithering;
            const Reduced reduced = Reduce(pixels, dithered);
            for (std::size_t n = 0; n < pixels.Count(); ++n)
                ASSERT_EQ(reduced.indices[n] == reduced.transparent, bytes[4 * n + 3] < 128) << n;
        }
    // A grey between the two entries, in every way of mixing them.
    const Bytes grey(3 * 64 * 64, 100);
    for (const Dithering dithering :
         {Dithering::diffusion, Dithering::ordered, Dithering::blueNoise}) {
        const Pixels flat = {grey.data(), 64, 64, 3};
        const Reduced reduced =
            Reduce(flat, {.given = Palette{{0, 0, 0}, {255, 255, 255}}, .dithering = dithering});
        const Bytes indices = IndicesOf(reduced, flat);
        const auto white = std::count(indices.begin(), indices.end(), 1);
        EXPECT_NEAR(static_cast<double>(white) * 255 / (64 * 64), 100, 12);
    }
}

TEST(Reduce, KeepsWhatWasGiven) {
    const Bytes bytes = RandomPixels(PictureKind::photo, 50, 60, 3, 2);
    const Pixels pixels = {bytes.data(), 50, 60, 3};
    const Palette twice = {{9, 9, 9}, {200, 0, 0}, {9, 9, 9}, {0, 0, 200}};
    EXPECT_EQ(Reduce(pixels, {.given = twice}).palette, twice);
    const Palette kept = {{1, 2, 3}, {250, 0, 250}};
    const Palette palette = Reduce(pixels, {.entries = 8, .kept = kept}).palette;
    ASSERT_EQ(palette.size(), 8U);
    EXPECT_TRUE(std::equal(kept.begin(), kept.end(), palette.begin()));
    // Of a palette that is too large the entries that the picture uses are left, in their order.
    const Bytes two = {200, 0, 0, 9, 9, 9};
    EXPECT_EQ(Reduce({two.data(), 1, 2, 3}, {.entries = 2, .given = twice}).palette,
              (Palette{{9, 9, 9}, {200, 0, 0}}));
}

} // namespace
} // namespace gif89
