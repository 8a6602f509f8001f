// PNG pictures of every form against a plain computation from the samples they were written from.
#include "MakePng.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using gif89::Picture;

namespace {

struct ColorType {
    int type;
    int samples;
    std::vector<int> depths;
};
const ColorType kColorTypes[] = {{PNG_COLOR_TYPE_GRAY, 1, {1, 2, 4, 8, 16}},
                                 {PNG_COLOR_TYPE_PALETTE, 1, {1, 2, 4, 8}},
                                 {PNG_COLOR_TYPE_GRAY_ALPHA, 2, {8, 16}},
                                 {PNG_COLOR_TYPE_RGB, 3, {8, 16}},
                                 {PNG_COLOR_TYPE_RGB_ALPHA, 4, {8, 16}}};

std::vector<unsigned> RandomSamples(const PngForm& form, int perPixel, std::mt19937& random) {
    const auto levels = form.colorType == PNG_COLOR_TYPE_PALETTE ? form.palette.size()
                                                                 : std::size_t{1} << form.depth;
    std::vector<unsigned> samples(static_cast<std::size_t>(form.columns * form.rows * perPixel));
    for (unsigned& sample : samples) sample = static_cast<unsigned>(random() % levels);
    return samples;
}

// Palette and transparency; the transparent color is that of the first pixel, and where there is
// room the second differs from it in the last bit of the last sample only.
void AddDetails(PngForm& form, int perPixel, std::mt19937& random, std::vector<unsigned>& samples,
                bool transparent) {
    if (form.colorType == PNG_COLOR_TYPE_PALETTE) {
        const auto byte = [&random] { return static_cast<png_byte>(random()); };
        for (unsigned n = 0; n < std::min(1U << form.depth, 200U); ++n)
            form.palette.push_back({byte(), byte(), byte()});
        if (transparent) form.opacities = {0, byte()};
    }
    samples = RandomSamples(form, perPixel, random);
    if (form.colorType == PNG_COLOR_TYPE_PALETTE || !transparent) return;
    const auto count = static_cast<std::size_t>(perPixel);
    if (samples.size() > count) {
        std::copy_n(samples.begin(), count, samples.begin() + perPixel);
        samples[2 * count - 1] ^= 1;
    }
    const auto sample = [&](std::size_t n) { return static_cast<png_uint_16>(samples[n]); };
    form.transparent = png_color_16{};
    form.transparent->gray = sample(0);
    if (perPixel == 3) {
        form.transparent->red = sample(0);
        form.transparent->green = sample(1);
        form.transparent->blue = sample(2);
    }
}

unsigned To8Bits(unsigned sample, int depth) {
    return static_cast<unsigned>(std::lround(sample * 255.0 / ((1 << depth) - 1)));
}

// Red, green, blue, opacity of each pixel.
Bytes ExpectedColors(const PngForm& form, int perPixel, const std::vector<unsigned>& samples) {
    Bytes colors;
    const auto put = [&colors](unsigned value) {
        colors.push_back(static_cast<std::uint8_t>(value));
    };
    for (auto pixel = samples.begin(); pixel != samples.end(); pixel += perPixel) {
        const auto level = [&](int n) { return To8Bits(pixel[n], form.depth); };
        if (form.colorType == PNG_COLOR_TYPE_PALETTE) {
            const png_color color = form.palette[*pixel];
            for (const png_byte value : {color.red, color.green, color.blue}) put(value);
            put(*pixel < form.opacities.size() ? form.opacities[*pixel] : 255);
            continue;
        }
        for (int n = 0; n < 3; ++n) put(level(perPixel >= 3 ? n : 0));
        const auto& key = form.transparent;
        const bool isKey = key && (perPixel == 1 ? pixel[0] == key->gray
                                                 : pixel[0] == key->red && pixel[1] == key->green &&
                                                       pixel[2] == key->blue);
        put(isKey ? 0 : perPixel % 2 == 0 ? level(perPixel - 1) : 255);
    }
    return colors;
}

Bytes ColorsOf(Picture& picture) {
    ExpandToRGB(picture);
    Bytes colors;
    const Bytes pixels = PixelsOf(picture);
    const auto step = static_cast<std::size_t>(picture.BytesPerPixel());
    for (std::size_t n = 0; n < pixels.size(); n += step) {
        for (std::size_t c = 0; c < 3; ++c) colors.push_back(pixels[n + c]);
        colors.push_back(step == 4 ? pixels[n + 3] : 255);
    }
    return colors;
}

void CheckIndexed(const Picture& picture, const PngForm& form,
                  const std::vector<unsigned>& samples) {
    const bool isPalette = form.colorType == PNG_COLOR_TYPE_PALETTE;
    EXPECT_EQ(picture.colors,
              isPalette ? static_cast<int>(form.palette.size()) : 1 << std::min(form.depth, 8));
    Bytes indices;
    for (const unsigned sample : samples)
        indices.push_back(
            static_cast<std::uint8_t>(form.depth == 16 ? To8Bits(sample, 16) : sample));
    EXPECT_EQ(PixelsOf(picture), indices);
    for (int index = picture.colors; index < 256; ++index)
        EXPECT_EQ(PackColor(TableEntry(picture.table, index)), 0U) << "unused entry " << index;
}

void CheckForm(PngForm form, int perPixel, bool transparent, std::mt19937& random) {
    std::vector<unsigned> samples;
    AddDetails(form, perPixel, random, samples, transparent);
    Picture picture = PictureFromBytes(MakePng(form, samples));

    ASSERT_EQ(picture.rows, form.rows);
    ASSERT_EQ(picture.columns, form.columns);
    const Bytes expected = ExpectedColors(form, perPixel, samples);
    bool opaque = true;
    for (std::size_t n = 3; n < expected.size(); n += 4) opaque &= expected[n] == 255;
    if (perPixel == 1) {
        ASSERT_EQ(picture.kind, Picture::Kind::indexed);
        CheckIndexed(picture, form, samples);
        EXPECT_EQ(picture.channels.empty(), opaque);
    } else {
        EXPECT_EQ(picture.kind, opaque ? Picture::Kind::rgb : Picture::Kind::rgbAlpha);
    }
    EXPECT_EQ(ColorsOf(picture), expected);
}

const std::vector<png_color> kTwoColors = {{9, 8, 7}, {6, 5, 4}};

} // namespace

TEST(ReadPng, EveryFormKeepsItsValues) {
    constexpr unsigned kSeed = 20240601;
    std::mt19937 random(kSeed);
    constexpr int kSides[][2] = {{1, 1}, {1, 9}, {9, 1}, {4, 4}, {13, 17}}; // columns, rows
    for (const ColorType& color : kColorTypes)
        for (const int depth : color.depths)
            for (const bool interlaced : {false, true})
                for (const bool transparent : {false, true})
                    for (const auto& [columns, rows] : kSides) {
                        if (transparent && color.samples % 2 == 0) continue; // has alpha
                        SCOPED_TRACE(testing::Message()
                                     << "seed " << kSeed << ", color type " << color.type
                                     << ", depth " << depth << ", interlaced " << interlaced
                                     << ", tRNS " << transparent << ", " << columns << " x "
                                     << rows);
                        CheckForm({.columns = columns,
                                   .rows = rows,
                                   .colorType = color.type,
                                   .depth = depth,
                                   .interlaced = interlaced},
                                  color.samples, transparent, random);
                    }
}

TEST(ReadPng, GammaLeavesValuesAlone) {
    const PngForm form = {.colorType = PNG_COLOR_TYPE_RGB, .gamma = 1.0};
    EXPECT_EQ(PixelsOf(PictureFromBytes(MakePng(form, {10, 50, 100}))), (Bytes{10, 50, 100}));
}

TEST(ReadPng, TransparencyIsKeptOnlyWhenAPixelShowsIt) {
    const struct {
        std::vector<std::uint8_t> opacities;
        std::size_t channels;
    } cases[] = {{{0}, 0}, {{255, 255}, 0}, {{255, 254}, 1}};
    for (const auto& c : cases) {
        const PngForm form = {.colorType = PNG_COLOR_TYPE_PALETTE,
                              .depth = 1,
                              .palette = kTwoColors,
                              .opacities = c.opacities};
        EXPECT_EQ(PictureFromBytes(MakePng(form, {1})).channels.size(), c.channels)
            << testing::PrintToString(c.opacities);
    }
    const PngForm solid = {.columns = 2, .colorType = PNG_COLOR_TYPE_GRAY_ALPHA};
    EXPECT_EQ(PictureFromBytes(MakePng(solid, {7, 255, 9, 255})).kind, Picture::Kind::rgb);
}

TEST(ReadPng, CommentComesFromTheTexts) {
    constexpr int kPlain = PNG_TEXT_COMPRESSION_NONE, kZipped = PNG_TEXT_COMPRESSION_zTXt,
                  kUtf8 = PNG_ITXT_COMPRESSION_NONE, kZippedUtf8 = PNG_ITXT_COMPRESSION_zTXt;
    const struct {
        std::vector<PngText> texts;
        const char* comment;
    } cases[] = {
        {{}, ""},
        {{{kPlain, "Title", "no"}}, ""},
        {{{kPlain, "Description", "sea"}}, "sea"},
        {{{kPlain, "Description", "sea"}, {kZipped, "Comment", "land"}}, "land"},
        {{{kPlain, "Comment", ""}, {kPlain, "Description", "sea"}}, "sea"},
        {{{kPlain, "Comment", "caf\xE9"}}, "caf\xC3\xA9"},
        {{{kPlain, "Comment", "\xC3\xA9"}}, "\xC3\x83\xC2\xA9"}, // Latin-1 by definition
        {{{kUtf8, "Comment", "\xC3\xA9t\xC3\xA9"}}, "\xC3\xA9t\xC3\xA9"},
        {{{kZippedUtf8, "Comment", "\xE2\x82\xAC"}}, "\xE2\x82\xAC"},
    };
    for (const auto& c : cases) {
        const PngForm form = {.texts = c.texts};
        EXPECT_EQ(PictureFromBytes(MakePng(form, {0})).comment, c.comment);
    }
}

TEST(ReadPng, DamageIsRefusedWhereverItIs) {
    for (const bool interlaced : {false, true}) {
        const PngForm form = {.columns = 3,
                              .rows = 2,
                              .colorType = PNG_COLOR_TYPE_PALETTE,
                              .depth = 4,
                              .interlaced = interlaced,
                              .palette = kTwoColors,
                              .opacities = {0},
                              .texts = {{PNG_TEXT_COMPRESSION_NONE, "Comment", "sea"}}};
        const Bytes file = MakePng(form, {0, 1, 1, 0, 0, 1});
        ASSERT_EQ(RefusalOf(file), "");
        ExpectEveryCutRefused(file);
        EXPECT_EQ(CountRefusedBitFlips(file), file.size() * 8); // every byte is under a checksum
    }
}

TEST(ReadPng, RefusalsSayWhy) {
    const PngForm beyond = {
        .columns = 2, .colorType = PNG_COLOR_TYPE_PALETTE, .palette = kTwoColors};
    EXPECT_EQ(RefusalOf(MakePng(beyond, {0, 200})),
              "is a damaged PNG picture: a pixel has color 200 of a palette of 2");

    PngForm wide = {};
    for (const int columns : {32768, 1'500'000}) { // the library itself stops at a million
        wide.columns = columns;
        EXPECT_EQ(
            RefusalOf(MakePng(wide, std::vector<unsigned>(static_cast<std::size_t>(columns)))),
            "is " + std::to_string(columns) + " x 1 pixels; sides above 32767 cannot be stored");
    }
    wide.columns = 32767;
    Bytes file = MakePng(wide, std::vector<unsigned>(32767));
    EXPECT_EQ(PictureFromBytes(file).columns, 32767);
    file.resize(40);
    EXPECT_EQ(RefusalOf(file), "is a damaged PNG picture: the file ends before the picture does");
}
