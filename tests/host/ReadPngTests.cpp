// PNG pictures of every form against a plain computation from the samples they were written from.
#include "MakeExif.h"
#include "MakePng.h"
#include "MakeProfile.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using gif89::Picture;

namespace {

// Gives the form a palette or transparency, and random samples. The transparent color is that of
// the first pixel; the second, where there is one, differs from it in its last bit only.
std::vector<unsigned> Fill(PngForm& form, int perPixel, bool transparent, std::mt19937& random) {
    const auto byte = [&random] { return static_cast<png_byte>(random()); };
    const bool isPalette = form.colorType == PNG_COLOR_TYPE_PALETTE;
    const unsigned levels = std::min(1U << form.depth, isPalette ? 200U : 65536U);
    for (unsigned n = 0; isPalette && n < levels; ++n)
        form.palette.push_back({byte(), byte(), byte()});
    std::vector<unsigned> samples(static_cast<std::size_t>(form.columns * form.rows * perPixel));
    for (unsigned& sample : samples) sample = static_cast<unsigned>(random() % levels);
    if (transparent && isPalette) form.opacities = {0, byte()};
    if (!transparent || isPalette) return samples;

    const auto count = static_cast<std::size_t>(perPixel);
    if (samples.size() > count) {
        std::copy_n(samples.begin(), count, samples.begin() + perPixel);
        samples[2 * count - 1] ^= 1;
    }
    const auto key = [&](std::size_t n) { return static_cast<png_uint_16>(samples[n]); };
    form.transparent = png_color_16{0, key(0), key(count / 2), key(count - 1), key(0)};
    return samples;
}

void CheckForm(PngForm form, int perPixel, bool transparent, std::mt19937& random) {
    const std::vector<unsigned> samples = Fill(form, perPixel, transparent, random);
    Bytes colors, indices;
    for (auto pixel = samples.begin(); pixel != samples.end(); pixel += perPixel) {
        const auto level = [&](int n) {
            return static_cast<std::uint8_t>(
                std::lround(pixel[n] * 255.0 / ((1 << form.depth) - 1)));
        };
        Bytes color = {level(0), level(perPixel / 3), level(perPixel / 3 * 2), 255};
        if (perPixel % 2 == 0) color[3] = level(perPixel - 1);
        if (form.transparent && std::equal(pixel, pixel + perPixel, samples.begin())) color[3] = 0;
        if (!form.palette.empty()) {
            const png_color entry = form.palette[*pixel];
            const bool stated = *pixel < form.opacities.size();
            color = {entry.red, entry.green, entry.blue,
                     stated ? form.opacities[*pixel] : std::uint8_t{255}};
        }
        colors.insert(colors.end(), color.begin(), color.end());
        indices.push_back(form.depth == 16 ? level(0) : static_cast<std::uint8_t>(*pixel));
    }
    const Picture picture = PictureFromBytes(MakePng(form, samples));
    ASSERT_EQ(picture.rows, form.rows);
    ASSERT_EQ(picture.columns, form.columns);
    EXPECT_EQ(ColorsOf(CopyPicture(picture)), colors);
    if (perPixel > 1) return;
    EXPECT_EQ(PixelsOf(picture), indices);
    EXPECT_EQ(picture.colors, form.palette.empty() ? 1 << std::min(form.depth, 8)
                                                   : static_cast<int>(form.palette.size()));
}

// Numbers as chunks have them.
std::string Longs(const std::vector<int>& numbers) {
    std::string bytes;
    for (const int number : numbers)
        for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
    return bytes;
}

const std::vector<png_color> kTwoColors = {{9, 8, 7}, {6, 5, 4}};

} // namespace

TEST(ReadPng, EveryFormKeepsItsValues) {
    std::mt19937 random(20240601);
    const std::tuple<int, int, std::vector<int>> types[] = {
        // samples a pixel, depths
        {PNG_COLOR_TYPE_GRAY, 1, {1, 2, 4, 8, 16}},
        {PNG_COLOR_TYPE_PALETTE, 1, {1, 2, 4, 8}},
        {PNG_COLOR_TYPE_GRAY_ALPHA, 2, {8, 16}},
        {PNG_COLOR_TYPE_RGB, 3, {8, 16}},
        {PNG_COLOR_TYPE_RGB_ALPHA, 4, {8, 16}}};
    for (const auto& [type, perPixel, depths] : types)
        for (const int depth : depths)
            for (const bool interlaced : {false, true})
                for (const bool transparent : {false, true})
                    for (const auto& [columns, rows] :
                         {std::pair{1, 1}, {1, 9}, {9, 1}, {13, 17}}) {
                        if (transparent && perPixel % 2 == 0) continue; // has alpha
                        SCOPED_TRACE(testing::Message()
                                     << "color type " << type << ", depth " << depth
                                     << ", interlaced " << interlaced << ", tRNS " << transparent
                                     << ", " << columns << " x " << rows);
                        CheckForm({columns, rows, type, depth, interlaced}, perPixel, transparent,
                                  random);
                    }
}

TEST(ReadPng, TransparencyIsKeptOnlyWhenAPixelShowsIt) {
    PngForm form = {.colorType = PNG_COLOR_TYPE_PALETTE, .depth = 1, .palette = kTwoColors};
    for (const auto& opacities : {Bytes{0}, Bytes{255, 255}, Bytes{255, 254}}) {
        form.opacities = opacities; // the one pixel has the second entry
        EXPECT_EQ(PictureFromBytes(MakePng(form, {1})).channels.size(), opacities.back() == 254);
    }
    const PngForm grey = {.colorType = PNG_COLOR_TYPE_GRAY_ALPHA};
    EXPECT_EQ(PixelsOf(PictureFromBytes(MakePng(grey, {7, 255}))), (Bytes{7, 7, 7}));
    EXPECT_EQ(PixelsOf(PictureFromBytes(MakePng(grey, {7, 254}))), (Bytes{7, 7, 7, 254}));
}

TEST(ReadPng, ProfileIsApplied) {
    using enum gif89::InputNotes::ProfileUse;
    constexpr int kGrey = PNG_COLOR_TYPE_GRAY, kColor = PNG_COLOR_TYPE_RGB;
    const std::vector<unsigned> color = {100, 100, 100}, reddish = {200, 100, 100};
    // Display P3, whose green of that is 0.1085 in the light of sRGB.
    const std::string kWide = Longs({31270, 32900, 68000, 32000, 26500, 69000, 15000, 6000});
    const int linear = StandardLevel(100 / 255.0), dark = StandardLevel(std::pow(100 / 255.0, 3));
    const struct {
        PngForm form;
        std::vector<unsigned> pixel;
        gif89::InputNotes::ProfileUse use;
        int level;
    } cases[] = {
        {{.colorType = kColor, .profile = MakeRgbProfile(1)}, color, converted, linear},
        {{.colorType = kGrey, .profile = MakeGreyProfile(3)}, {100}, converted, dark},
        {{.colorType = kColor, .standard = true}, color, same, 100},
        {{.colorType = kColor, .chunks = {{"iCCP", {"ICC\0\0junk", 9}}}}, color, unusable, 100},
        {{.colorType = kColor, .chunks = {{"gAMA", Longs({100000})}}}, color, converted, linear},
        {{.colorType = kGrey, .chunks = {{"gAMA", Longs({33333})}}}, {100}, converted, dark},
        {{.colorType = kColor, .chunks = {{"gAMA", Longs({45455})}}}, color, same, 100},
        {{.colorType = kColor, .chunks = {{"cHRM", kWide}}}, reddish, converted, 93},
        {{.colorType = kColor, .chunks = {{"cICP", {"\x0C\x0D\0\1", 4}}}}, reddish, converted, 93},
        {{.colorType = kColor, .chunks = {{"cICP", {"\x09\x08\0\1", 4}}}},
         color,
         converted,
         linear},
        {{.colorType = kColor, .chunks = {{"cICP", {"\x09\x10\0\1", 4}}}}, color, unusable, 100},
        // The first of cICP, iCCP, sRGB and gAMA counts.
        {{.colorType = kColor,
          .profile = MakeRgbProfile(1),
          .chunks = {{"cICP", {"\1\x0D\0\1", 4}}, {"gAMA", Longs({100000})}}},
         color,
         same,
         100},
        {{.colorType = kColor, .standard = true, .chunks = {{"gAMA", Longs({100000})}}},
         color,
         same,
         100}};
    for (const auto& each : cases) {
        Picture picture = PictureFromBytes(MakePng(each.form, each.pixel));
        EXPECT_EQ(picture.notes.profileUse, each.use);
        ExpandToRGB(picture);
        EXPECT_NEAR(picture.pixels[1], each.level, 1)
            << "case " << &each - cases << ", " << picture.notes.profileName;
    }
}

TEST(ReadPng, OrientationAndDepthAreNoted) {
    const PngForm turned = {.columns = 2, .exif = MakeExif(6, ByteOrder::big)};
    const Picture picture = PictureFromBytes(MakePng(turned, {1, 2}));
    EXPECT_TRUE(picture.rows == 2 && picture.columns == 1 && picture.notes.oriented);
    const PngForm deep = {.columns = 2, .depth = 16};
    EXPECT_EQ(PictureFromBytes(MakePng(deep, {65535, 257 * 9})).notes.bits, 16);
    EXPECT_FALSE(PictureFromBytes(MakePng(deep, {65535, 257 * 9})).notes.rounded);
    EXPECT_TRUE(PictureFromBytes(MakePng(deep, {65535, 257 * 9 + 1})).notes.rounded);
    // The picture itself is a frame of the animation or not.
    PngForm animated = {.chunks = {{"acTL", Longs({3, 0})}}};
    EXPECT_EQ(PictureFromBytes(MakePng(animated, {0})).notes.pictures, 4);
    animated.chunks.emplace_back("fcTL", std::string(26, '\0'));
    EXPECT_EQ(PictureFromBytes(MakePng(animated, {0})).notes.pictures, 3);
}

TEST(ReadPng, CommentComesFromTheTexts) {
    constexpr int kPlain = PNG_TEXT_COMPRESSION_NONE, kZipped = PNG_TEXT_COMPRESSION_zTXt,
                  kUtf8 = PNG_ITXT_COMPRESSION_NONE, kZippedUtf8 = PNG_ITXT_COMPRESSION_zTXt;
    const std::pair<std::vector<PngText>, const char*> cases[] = {
        {{{kPlain, "Title", "no"}}, ""},
        {{{kPlain, "Description", "sea"}, {kZipped, "Comment", "land"}}, "land"},
        {{{kPlain, "Comment", ""}, {kPlain, "Description", "sea"}}, "sea"},
        {{{kPlain, "Comment", "\xC3\xA9"}}, "\xC3\x83\xC2\xA9"}, // Latin-1 by definition
        {{{kUtf8, "Comment", "\xC3\xA9t\xC3\xA9"}}, "\xC3\xA9t\xC3\xA9"},
        {{{kZippedUtf8, "Comment", "\xE2\x82\xAC"}}, "\xE2\x82\xAC"}};
    for (const auto& [texts, comment] : cases) {
        const PngForm form = {.texts = texts};
        EXPECT_EQ(PictureFromBytes(MakePng(form, {0})).comment, comment);
    }
}

TEST(ReadPng, DamageIsNoticedWhereverItIs) {
    PngForm form = {3, 2, PNG_COLOR_TYPE_PALETTE, 4, false, kTwoColors, {0}};
    form.texts = {{PNG_TEXT_COMPRESSION_NONE, "Comment", "sea"}};
    for (const bool interlaced : {false, true}) {
        form.interlaced = interlaced;
        const Bytes file = MakePng(form, {0, 1, 1, 0, 0, 1});
        EXPECT_EQ(CountNoticedDamage(file), file.size() * 8); // every byte is under a checksum
    }
}

TEST(ReadPng, RefusalsSayWhy) {
    const PngForm beyond = {2, 1, PNG_COLOR_TYPE_PALETTE, 8, false, kTwoColors};
    EXPECT_EQ(RefusalOf(MakePng(beyond, {0, 200})),
              "is a damaged PNG picture: a pixel has colour 200 of a palette of 2");
    PngForm wide = {};
    for (const unsigned columns : {32768U, 1'500'000U}) { // the library itself stops at a million
        wide.columns = static_cast<int>(columns);
        EXPECT_EQ(RefusalOf(MakePng(wide, std::vector<unsigned>(columns))),
                  "is " + std::to_string(columns) +
                      " x 1 pixels; sides above 32767 cannot be stored");
    }
    wide.columns = 32767;
    Bytes file = MakePng(wide, std::vector<unsigned>(32767));
    EXPECT_EQ(PictureFromBytes(file).columns, 32767);
    EXPECT_EQ(ComplaintAbout(Bytes(file.begin(), file.end() - 12)),
              "all pixels were read, but behind them the file is damaged: its end is missing");
    PngForm wordy = {.texts = {5, {PNG_TEXT_COMPRESSION_zTXt, "Title", std::string(7 << 20, 'x')}}};
    EXPECT_EQ(RefusalOf(MakePng(wordy, {0})), "has more than 32 megabytes of texts and profiles");
    file.resize(40);
    EXPECT_EQ(RefusalOf(file), "is a damaged PNG picture: the file ends before the picture does");
}
