// Pictures that a GIF can hold come out of the command line as they went in: every pixel and, where
// there is one, the table, as a decoder from outside reads them.
#include "GiflibDecode.h"
#include "MakePng.h"
#include "RunProgram.h"

#include <gtest/gtest.h>

namespace {

struct Rgba {
    int red, green, blue, opacity;
    bool operator==(const Rgba& other) const {
        const bool hidden = opacity == 0 && other.opacity == 0;
        return hidden || (red == other.red && green == other.green && blue == other.blue &&
                          opacity == other.opacity);
    }
};

struct Case {
    const char* name;
    PngForm form;
    std::vector<unsigned> samples;
    std::vector<Rgba> pixels;
};

// Truecolour, with opacity where a pixel needs it.
Case Truecolor(const char* name, const std::vector<Rgba>& pixels, int columns) {
    const bool alpha = std::any_of(pixels.begin(), pixels.end(),
                                   [](const Rgba& pixel) { return pixel.opacity != 255; });
    Case made{name, {}, {}, pixels};
    made.form.columns = columns;
    made.form.rows = static_cast<int>(pixels.size()) / columns;
    made.form.colorType = alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
    for (const Rgba& pixel : pixels)
        for (const int sample : {pixel.red, pixel.green, pixel.blue, pixel.opacity})
            made.samples.push_back(static_cast<unsigned>(sample));
    if (!alpha)
        for (std::size_t i = pixels.size(); i-- > 0;)
            made.samples.erase(made.samples.begin() + static_cast<std::ptrdiff_t>(i) * 4 + 3);
    return made;
}

// Colours one step apart, which a map of coarse cells would take for one another.
std::vector<Rgba> CloseColors(int count) {
    std::vector<Rgba> pixels;
    for (int i = 0; i < count; ++i) pixels.push_back({100 + i % 16, 90 + i / 16, 80, 255});
    return pixels;
}

Case GreyRamp() {
    Case made{"grey ramp", {.columns = 256}, {}, {}};
    for (int i = 0; i < 256; ++i) {
        made.samples.push_back(static_cast<unsigned>(i));
        made.pixels.push_back({i, i, i, 255});
    }
    return made;
}

// Entries 1 and 3 are one colour, 0 and 4 are not used.
Case DoublePalette() {
    Case made{"palette with doubles",
              {.columns = 4,
               .colorType = PNG_COLOR_TYPE_PALETTE,
               .palette = {{9, 9, 9}, {1, 2, 3}, {200, 0, 0}, {1, 2, 3}, {7, 7, 7}}},
              {3, 1, 2, 3},
              {}};
    for (const unsigned index : made.samples) {
        const png_color color = made.form.palette[index];
        made.pixels.push_back({color.red, color.green, color.blue, 255});
    }
    return made;
}

std::vector<Case> Cases() {
    std::vector<Rgba> sprites = CloseColors(240); // repeated, with holes
    for (int i = 0; i < 240; ++i) sprites.push_back(i % 3 ? sprites[i / 4U] : Rgba{i, 0, 0, 0});
    std::vector<Rgba> full = CloseColors(255);
    full.push_back({1, 2, 3, 0});
    return {Truecolor("200 close colours", CloseColors(200), 20),
            Truecolor("256 colours without black and white", CloseColors(256), 16),
            Truecolor("255 colours and transparency", full, 16),
            Truecolor("pixel art", sprites, 24),
            GreyRamp(),
            DoublePalette()};
}

TEST(Lossless, PicturesKeepEveryPixelAndTheReportSaysSo) {
    for (const Case& c : Cases()) {
        SCOPED_TRACE(c.name);
        const TemporaryFolder folder;
        const auto png = MakePng(c.form, c.samples);
        folder.Write("a.png", {reinterpret_cast<const char*>(png.data()), png.size()});
        const ProgramRun run =
            RunProgram("gif89", {"-q", "--report", "json", "a.png"}, {folder.Path(), {}});
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_NE(run.output.find("\"lossless\":true"), std::string::npos) << run.output;

        const std::string bytes = folder.Read("a.gif");
        std::string reason;
        const auto gif = GiflibDecode(
            {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, &reason);
        ASSERT_TRUE(gif) << reason;
        ASSERT_EQ(gif->indices.size(), c.pixels.size());
        for (std::size_t n = 0; n < c.pixels.size(); ++n) {
            const int index = gif->indices[n];
            const RGBtuple color = TableEntry(gif->table, index);
            const Rgba shown = {color.red, color.green, color.blue,
                                index == gif->transparentIndex ? 0 : 255};
            ASSERT_TRUE(shown == c.pixels[n]) << "pixel " << n;
        }
        if (c.form.colorType != PNG_COLOR_TYPE_PALETTE) continue;
        EXPECT_TRUE(std::equal(c.samples.begin(), c.samples.end(), gif->indices.begin()));
        for (std::size_t i = 0; i < c.form.palette.size(); ++i)
            EXPECT_EQ(TableEntry(gif->table, static_cast<int>(i)).red, c.form.palette[i].red) << i;
    }
}

} // namespace
