// Pictures that a GIF can hold come out of the command line as they went in: every pixel and, where
// there is one, the table, as a decoder from outside reads them.
#include "GiflibDecode.h"
#include "MakePng.h"
#include "RunProgram.h"

#include <gtest/gtest.h>

namespace {

using Rgba = std::array<unsigned, 4>;

struct Case {
    const char* name;
    PngForm form;
    std::vector<unsigned> samples;
    std::vector<Rgba> pixels;
};

Case Truecolor(const char* name, const std::vector<Rgba>& pixels, int columns) {
    Case made{name, {}, {}, pixels};
    made.form.columns = columns;
    made.form.rows = static_cast<int>(pixels.size()) / columns;
    made.form.colorType = PNG_COLOR_TYPE_RGB_ALPHA;
    for (const Rgba& pixel : pixels)
        made.samples.insert(made.samples.end(), pixel.begin(), pixel.end());
    return made;
}

// Colours one step apart, which a map of coarse cells would take for one another.
std::vector<Rgba> CloseColors(unsigned count) {
    std::vector<Rgba> pixels;
    for (unsigned i = 0; i < count; ++i) pixels.push_back({100 + i % 16, 90 + i / 16, 80, 255});
    return pixels;
}

Case GreyRamp() {
    Case made{"grey ramp", {.columns = 256}, {}, {}};
    for (unsigned i = 0; i < 256; ++i) {
        made.samples.push_back(i);
        made.pixels.push_back({i, i, i, 255});
    }
    return made;
}

// Entries 1 and 3 are one colour, 0 and 4 are not used.
Case DoublePalette() {
    return {"palette with doubles",
            {.columns = 4,
             .colorType = PNG_COLOR_TYPE_PALETTE,
             .palette = {{9, 9, 9}, {1, 2, 3}, {200, 0, 0}, {1, 2, 3}, {7, 7, 7}}},
            {3, 1, 2, 3},
            {{1, 2, 3, 255}, {1, 2, 3, 255}, {200, 0, 0, 255}, {1, 2, 3, 255}}};
}

std::vector<Case> Cases() {
    std::vector<Rgba> sprites = CloseColors(240); // repeated, with holes
    for (unsigned i = 0; i < 240; ++i) sprites.push_back(i % 3 ? sprites[i / 4] : Rgba{i, 0, 0, 0});
    std::vector<Rgba> full = CloseColors(255);
    full.push_back({1, 2, 3, 0});
    return {Truecolor("256 colours without black and white", CloseColors(256), 16),
            Truecolor("255 colours and transparency", full, 16),
            Truecolor("pixel art", sprites, 24), GreyRamp(), DoublePalette()};
}

TEST(Lossless, PicturesKeepEveryPixelAndTheReportSaysSo) {
    for (const Case& c : Cases()) {
        SCOPED_TRACE(c.name);
        const TemporaryFolder folder;
        const auto png = MakePng(c.form, c.samples);
        folder.Write("a.png", {png.begin(), png.end()});
        const ProgramRun run =
            RunProgram("gif89", {"-q", "--report", "json", "a.png"}, {folder.Path(), {}});
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_NE(run.output.find("\"lossless\":true"), std::string::npos) << run.output;

        std::string reason;
        const auto gif = GiflibDecode(folder.ReadBytes("a.gif"), &reason);
        ASSERT_TRUE(gif) << reason;
        ASSERT_EQ(gif->indices.size(), c.pixels.size());
        for (std::size_t n = 0; n < c.pixels.size(); ++n) {
            const int index = gif->indices[n];
            const auto [red, green, blue, opacity] = c.pixels[n];
            ASSERT_EQ(index == gif->transparentIndex, opacity == 0) << "pixel " << n;
            if (opacity == 0) continue;
            ASSERT_EQ(PackColor(TableEntry(gif->table, index)), red << 16 | green << 8 | blue)
                << "pixel " << n;
        }
        if (c.form.colorType != PNG_COLOR_TYPE_PALETTE) continue;
        EXPECT_TRUE(std::equal(c.samples.begin(), c.samples.end(), gif->indices.begin()));
        for (std::size_t i = 0; i < c.form.palette.size(); ++i)
            EXPECT_EQ(TableEntry(gif->table, static_cast<int>(i)).red, c.form.palette[i].red) << i;
    }
}

} // namespace
