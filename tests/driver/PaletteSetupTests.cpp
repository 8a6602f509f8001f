// Choosing the palette: exact, adaptive, supplied, resized, and the entry for transparency.
#include "DriverRun.h"

#include "PlainAdaptivePalette.h"
#include "RandomPictures.h"
#include "SetupPalette.h"

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
        // Few levels make ties; entries past the used ones count too, and are black.
        RGBLookUpTable table = RandomTable(static_cast<int>(seed % 256) + 1, seed);
        const std::uint8_t mask = seed % 2 ? 0xFF : 0xE0;
        for (auto* plane : {table.red, table.green, table.blue})
            for (int i = 0; i < 256; ++i) plane[i] &= mask;
        const RGBtuple color = TableEntry(RandomTable(1, seed + 1000), 0);
        EXPECT_EQ(FindMatchingIndex(&table, color), PlainNearest(table, color)) << "seed " << seed;
    }
}

// A context ready for SetupPalette on a photo, without the calls before it.
struct PaletteCase {
    explicit PaletteCase(int planes)
        : pixels(RandomPixels(PictureKind::photo, 40, 60, planes, 5)), host(40, 60, planes, pixels),
          histogram(131072) {
        context.exportRecord = &host.record;
        context.TakeShape();
        context.gifBuffer = histogram.data();
        context.transparentColor = kTransparent;
    }
    ~PaletteCase() { context.gifBuffer = nullptr; }

    RGBLookUpTable Adaptive(int colors) const {
        const int planes = host.record.planeCount;
        return PlainAdaptivePalette(PlainHistogram(pixels, planes, PackColor(kTransparent)),
                                    colors);
    }
    static constexpr RGBtuple kTransparent = {0, 10, 200, 30};
    std::vector<std::uint8_t> pixels;
    ScriptedHost host;
    std::vector<std::uint8_t> histogram;
    GIF89RGBExport context;
};

TEST(SetupPalette, BuildsAnAdaptivePaletteAndReservesAnEntryForTransparency) {
    for (const int colors : {2, 3, 16, 255, 256})
        for (const int planes : {3, 4}) {
            SCOPED_TRACE(testing::Message() << colors << " colours, " << planes << " planes");
            PaletteCase c(planes);
            c.context.numColors = colors;
            c.context.SetupPalette(0, 0);
            RGBLookUpTable expected = c.Adaptive(colors);
            const bool grows = planes == 4 && colors < 256;
            if (grows) SetTableEntry(expected, colors, PaletteCase::kTransparent);
            EXPECT_EQ(TableColors(c.context.palette), TableColors(expected));
            EXPECT_EQ(c.context.numColors, grows ? colors + 1 : colors);
            EXPECT_EQ(c.context.transIndex,
                      planes == 4 ? PlainNearest(expected, PaletteCase::kTransparent) : -1);
        }
}

TEST(SetupPalette, ResizesASuppliedPaletteOnlyWhenAllowed) {
    const RGBLookUpTable supplied = RandomTable(100, 8);
    const std::vector<PackedColor> all = TableColors(supplied);
    const std::tuple<bool, int, bool> cases[] = {
        {false, 20, false}, {true, 100, false}, {true, 20, true}};
    for (const auto& [mayResize, count, resized] : cases) {
        PaletteCase run(3);
        run.context.palette = supplied;
        run.context.suppliedPaletteCount = 100;
        run.context.numColors = count;
        const unsigned char flag = mayResize;
        std::memcpy(&run.context.suppliedPaletteFlag, &flag, 1);
        run.context.SetupPalette(0, 1);

        // The supplied entries nearest to the adaptive colours, then the others, in their order.
        std::set<int> needed;
        const RGBLookUpTable adaptive = run.Adaptive(count);
        for (int i = 0; resized && i < count; ++i)
            needed.insert(PlainNearest(supplied, TableEntry(adaptive, i)));
        std::vector<PackedColor> expected;
        for (const bool wanted : {true, false})
            for (int i = 0; i < 256; ++i)
                if (needed.contains(i) == wanted)
                    expected.push_back(all[static_cast<std::size_t>(i)]);
        std::fill(expected.begin() + count, expected.end(), 0);
        EXPECT_EQ(TableColors(run.context.palette), expected) << count;
        EXPECT_EQ(run.context.numColors, count);
    }
}

} // namespace
