// Choosing the palette: exact, adaptive, supplied, resized, and the entry for transparency.
#include "DriverRun.h"

#include "PlainAdaptivePalette.h"
#include "RandomPictures.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace {

int PlainNearest(const RGBLookUpTable& table, RGBtuple color) {
    std::vector<std::pair<int, int>> distances;
    for (int i = 0; i < 256; ++i) {
        const int red = table.red[i] - color.red, green = table.green[i] - color.green,
                  blue = table.blue[i] - color.blue;
        distances.emplace_back(red * red + green * green + blue * blue, i);
    }
    return std::min_element(distances.begin(), distances.end())->second;
}

TEST(FindMatchingIndex, TakesTheNearestAndOfEqualsTheLowest) {
    for (std::uint32_t seed = 1; seed <= 300; ++seed) {
        const RGBLookUpTable table = RandomTable(static_cast<int>(seed % 256) + 1, seed);
        const RGBtuple color = TableEntry(RandomTable(1, seed + 1000), 0);
        EXPECT_EQ(FindMatchingIndex(&table, color), PlainNearest(table, color)) << "seed " << seed;
    }
    RGBLookUpTable table = {};
    SetTableEntry(table, 3, {0, 10, 0, 0});
    SetTableEntry(table, 9, {0, 14, 0, 0});
    SetTableEntry(table, 12, {0, 12, 0, 0});
    EXPECT_EQ(FindMatchingIndex(&table, {0, 12, 0, 0}), 12) << "an equal entry";
    SetTableEntry(table, 12, {});
    EXPECT_EQ(FindMatchingIndex(&table, {0, 12, 0, 0}), 3) << "a tie";
    // Entries past the used ones count too, and are black.
    for (int i = 0; i < 16; ++i) SetTableEntry(table, i, {0, 255, 255, 255});
    EXPECT_EQ(FindMatchingIndex(&table, {}), 16);
}

TEST(TrimTopBlacks, DropsBlackEntriesAboveTheFloorOnly) {
    RGBLookUpTable table = {};
    SetTableEntry(table, 55, {0, 0, 0, 1});
    const struct {
        int count, floor, expected;
    } cases[] = {{256, 40, 56}, {256, 55, 56}, {256, 70, 71}, {56, 40, 56},
                 {55, 40, 41},  {30, 29, 30},  {1, 0, 1},     {256, 255, 256}};
    for (const auto& c : cases)
        EXPECT_EQ(TrimTopBlacks(&table, c.count, c.floor), c.expected)
            << c.count << ", " << c.floor;
}

// A context ready for SetupPalette on a photo, without the calls before it.
struct PaletteCase {
    explicit PaletteCase(int planes)
        : pixels(RandomPixels(PictureKind::photo, 40, 60, planes, 5)), host(40, 60, planes, pixels),
          histogram(131072) {
        context.exportRecord = &host.record;
        context.gifBuffer = histogram.data();
        context.transparentColor = kTransparent;
    }
    ~PaletteCase() { context.gifBuffer = nullptr; }

    RGBLookUpTable Adaptive(int colors) const {
        const int planes = host.record.planeCount;
        return PlainAdaptivePalette(PlainHistogram(pixels, planes, PackColor(kTransparent)),
                                    colors);
    }
    void MayResize() {
        const unsigned char yes = 1;
        std::memcpy(&context.suppliedPaletteFlag, &yes, 1);
    }

    static constexpr RGBtuple kTransparent = {0, 10, 200, 30};
    std::vector<std::uint8_t> pixels;
    ScriptedHost host;
    std::vector<std::uint8_t> histogram;
    GIF89RGBExport context;
};

TEST(SetupPalette, BuildsAnAdaptivePaletteOfTheColorsAskedFor) {
    for (const int colors : {2, 3, 16, 255, 256}) {
        PaletteCase c(3);
        c.context.numColors = colors;
        c.context.SetupPalette(0, 0);
        EXPECT_EQ(TableColors(c.context.palette), TableColors(c.Adaptive(colors))) << colors;
        EXPECT_EQ(c.context.numColors, colors);
        EXPECT_EQ(c.context.transIndex, -1);
    }
}

TEST(SetupPalette, ReservesAnEntryForTransparencyOrTakesTheNearest) {
    PaletteCase grows(4);
    grows.context.numColors = 255;
    grows.context.SetupPalette(0, 0);
    EXPECT_EQ(grows.context.numColors, 256);
    EXPECT_EQ(grows.context.transIndex, 255);
    RGBLookUpTable expected = grows.Adaptive(255);
    SetTableEntry(expected, 255, PaletteCase::kTransparent);
    EXPECT_EQ(TableColors(grows.context.palette), TableColors(expected));

    PaletteCase full(4);
    full.context.numColors = 256;
    full.context.palette = RandomTable(256, 8);
    full.context.SetupPalette(0, 1);
    EXPECT_EQ(full.context.numColors, 256);
    EXPECT_EQ(full.context.transIndex,
              PlainNearest(full.context.palette, PaletteCase::kTransparent));
    EXPECT_EQ(TableColors(full.context.palette), TableColors(RandomTable(256, 8)));
}

TEST(SetupPalette, UsesTheExactColorsWhateverElseIsSet) {
    PaletteCase c(3);
    ExactStart(&c.context.exactInfo);
    c.context.palette = RandomTable(256, 8);
    c.MayResize();
    c.context.SetupPalette(1, 1);
    EXPECT_EQ(c.context.numColors, 2);
    EXPECT_EQ(TableColors(c.context.palette, 3), (std::vector<PackedColor>{0xFFFFFF, 0, 0}));
    EXPECT_TRUE(c.host.requests.empty());
}

TEST(SetupPalette, ResizesASuppliedPaletteOnlyWhenAllowed) {
    const RGBLookUpTable supplied = RandomTable(100, 8);
    const struct {
        bool mayResize;
        int count;
        bool resized;
    } cases[] = {{false, 20, false}, {true, 100, false}, {true, 20, true}, {true, 99, true}};
    for (const auto& c : cases) {
        PaletteCase run(3);
        run.context.palette = supplied;
        run.context.suppliedPaletteCount = 100;
        run.context.numColors = c.count;
        if (c.mayResize) run.MayResize();
        run.context.SetupPalette(0, 1);

        // The supplied entries nearest to the adaptive colours, then the others, in their order.
        std::vector<PackedColor> expected = TableColors(supplied, c.count);
        if (c.resized) {
            std::set<int> needed;
            const RGBLookUpTable adaptive = run.Adaptive(c.count);
            for (int i = 0; i < c.count; ++i)
                needed.insert(PlainNearest(supplied, TableEntry(adaptive, i)));
            const std::vector<PackedColor> all = TableColors(supplied);
            expected.clear();
            for (const int i : needed) expected.push_back(all[static_cast<std::size_t>(i)]);
            for (int i = 0; i < 256; ++i)
                if (!needed.contains(i)) expected.push_back(all[static_cast<std::size_t>(i)]);
            expected.resize(static_cast<std::size_t>(c.count));
        }
        expected.resize(256);
        EXPECT_EQ(TableColors(run.context.palette), expected) << c.count;
        EXPECT_EQ(run.context.numColors, c.count);
    }
}

} // namespace
