// Pictures with embedded profiles against the formulas that the profiles stand for.
#include "ColorProfile.h"
#include "MakeProfile.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <utility>

using gif89::InkConverter;
using gif89::InkStorage;
using gif89::InputNotes;
using gif89::Picture;
using enum InputNotes::ProfileUse;
using enum Picture::Kind;

namespace {

using Color = std::array<int, 4>; // red, green, blue, opacity

enum class Shades : bool { colors, greys };

Picture MakeRandom(Picture::Kind kind, int side, Shades shades, unsigned seed = 1) {
    Picture picture = gif89::MakePicture(kind, side, side);
    std::mt19937 random(seed);
    const auto level = [&random] { return static_cast<std::uint8_t>(random()); };
    std::generate_n(picture.pixels.get(), picture.PixelBytes(), level);
    const int step = picture.BytesPerPixel();
    if (shades == Shades::greys && step > 1)
        for (std::size_t n = 0; n < picture.PixelBytes(); n += static_cast<std::size_t>(step))
            std::fill_n(&picture.pixels[n], 3, picture.pixels[n]);
    if (kind != indexed) return picture;
    picture.colors = 100;
    for (int index = 0; index < 100; ++index) {
        const std::uint8_t red = level();
        SetTableEntry(picture.table, index,
                      shades == Shades::greys ? RGBtuple{0, red, red, red}
                                              : RGBtuple{0, red, level(), level()});
    }
    return picture;
}

// The colors of a picture: its table, or its pixels.
std::vector<Color> ColorsOf(const Picture& picture) {
    std::vector<Color> colors;
    if (picture.kind == indexed)
        for (int index = 0; index < 256; ++index) {
            const RGBtuple color = TableEntry(picture.table, index);
            colors.push_back({color.red, color.green, color.blue, 255});
        }
    const auto step = static_cast<std::size_t>(picture.BytesPerPixel());
    for (std::size_t n = 0; step > 1 && n < picture.PixelBytes(); n += step) {
        const std::uint8_t* pixel = &picture.pixels[n];
        colors.push_back({pixel[0], pixel[1], pixel[2], step == 4 ? pixel[3] : 255});
    }
    return colors;
}

// Applies the profile and compares with what `expect` makes of each color, give or take a level.
template <typename Expect>
void CheckConversion(Picture picture, const Bytes& profile, Expect expect) {
    SCOPED_TRACE(testing::Message()
                 << picture.BytesPerPixel() << " bytes a pixel, side " << picture.rows);
    const std::vector<Color> before = ColorsOf(picture);
    const Bytes indices = picture.kind == indexed ? PixelsOf(picture) : Bytes();
    picture.notes.profile = profile;
    ApplyProfile(picture);
    EXPECT_EQ(picture.notes.profileUse, converted);
    EXPECT_TRUE(picture.notes.profile.empty());
    EXPECT_TRUE(picture.kind != indexed || PixelsOf(picture) == indices);

    const std::vector<Color> after = ColorsOf(picture);
    for (std::size_t n = 0; n < before.size(); ++n) {
        const Color expected = expect(before[n]);
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(after[n][c], expected[c], 1) << "color " << n << ", channel " << c;
        EXPECT_EQ(after[n][3], before[n][3]);
        const bool unused = picture.kind == indexed && n >= 100;
        EXPECT_TRUE(!unused || after[n] == (Color{0, 0, 0, 255})) << "entry " << n;
    }
}

// Checks that the profile leaves the picture as it is.
void CheckUntouched(Picture picture, const Bytes& profile, InputNotes::ProfileUse use) {
    const std::vector<Color> before = ColorsOf(picture);
    picture.notes.profile = profile;
    ApplyProfile(picture);
    EXPECT_EQ(picture.notes.profileUse, use);
    EXPECT_EQ(ColorsOf(picture), before);
}

int Encode(int level, double gamma) {
    return StandardLevel(std::pow(level / 255.0, gamma));
}

} // namespace

TEST(ApplyProfile, ConvertsColorsOfEveryKind) {
    // The side of 120 is enough for the shortcut over many pixels.
    for (const auto& [kind, side] :
         {std::pair{indexed, 9}, {rgb, 9}, {rgbAlpha, 9}, {rgb, 120}, {rgbAlpha, 120}}) {
        const Picture picture = MakeRandom(kind, side, Shades::colors);
        CheckConversion(CopyPicture(picture), MakeRgbProfile(1), [](Color color) {
            return Color{Encode(color[0], 1), Encode(color[1], 1), Encode(color[2], 1)};
        });
        CheckConversion(
            CopyPicture(picture), MakeRgbProfile(1.5, Primaries::redAndGreenSwapped),
            [](Color color) {
                return Color{Encode(color[1], 1.5), Encode(color[0], 1.5), Encode(color[2], 1.5)};
            });
    }
}

TEST(ApplyProfile, KeepsGreysGrey) {
    for (const Picture::Kind kind : {indexed, rgb, rgbAlpha}) {
        Picture picture = MakeRandom(kind, 20, Shades::greys);
        const auto expect = [](Color color) {
            const int level = Encode(color[0], 1.4);
            return Color{level, level, level};
        };
        CheckConversion(CopyPicture(picture), MakeRgbProfile(1.4), expect);
        CheckConversion(CopyPicture(picture), MakeGreyProfile(1.4), expect);
        picture.notes.profile = MakeGreyProfile(1.4);
        ApplyProfile(picture);
        for (const Color& color : ColorsOf(picture))
            EXPECT_TRUE(color[0] == color[1] && color[0] == color[2]) << color[0];
    }
}

TEST(ApplyProfile, LeavesStandardColorsUntouched) {
    for (const Picture::Kind kind : {indexed, rgb, rgbAlpha})
        CheckUntouched(MakeRandom(kind, 120, Shades::colors), MakeStandardProfile(), same);
    Picture picture = MakeRandom(rgb, 1, Shades::colors);
    picture.notes.profile = MakeStandardProfile();
    ApplyProfile(picture);
    EXPECT_EQ(picture.notes.profileName, "B\xC3\xBCro\xF0\x9F\x98\x80"); // without the Escape

    // A reader has found out by itself.
    picture.notes.profileName = "by the reader";
    ApplyProfile(picture);
    EXPECT_EQ(picture.notes.profileUse, same);
    EXPECT_EQ(picture.notes.profileName, "by the reader");
}

TEST(ApplyProfile, LeavesPicturesAloneThatTheProfileIsNotFor) {
    for (const Picture::Kind kind : {indexed, rgb, rgbAlpha})
        for (const Bytes& profile : {MakeInkProfile(), MakeGreyProfile(1.4), MakeLinkProfile()})
            CheckUntouched(MakeRandom(kind, 9, Shades::colors), profile, unusable);
}

TEST(ApplyProfile, SurvivesDamagedProfiles) {
    const Bytes profile = MakeRgbProfile(1);
    for (std::size_t length = 1; length < profile.size() - 52; ++length) // up to the curves
        CheckUntouched(MakeRandom(rgb, 2, Shades::colors),
                       Bytes(profile.begin(), profile.begin() + static_cast<long>(length)),
                       unusable);
    std::mt19937 random(20240607);
    for (const Bytes& whole : {profile, MakeGreyProfile(1.4), MakeStandardProfile()})
        for (int n = 0; n < 100; ++n) {
            Picture picture = MakeRandom(indexed, 1, Shades::greys);
            Bytes damaged = whole;
            for (int flips = 0; flips < 3; ++flips)
                damaged[random() % damaged.size()] ^= static_cast<std::uint8_t>(1 << random() % 8);
            picture.notes.profile = damaged;
            ApplyProfile(picture);
            EXPECT_NE(picture.notes.profileUse, none);
            EXPECT_EQ(PackColor(TableEntry(picture.table, 200)), 0U);
        }
}

TEST(InkConverter, FollowsTheProfileOrMultiplies) {
    const std::pair<Bytes, InputNotes::ProfileUse> cases[] = {{MakeInkProfile(), converted},
                                                              {MakeRgbProfile(1), unusable},
                                                              {Bytes(9), unusable},
                                                              {{}, none}};
    std::mt19937 random(20240608);
    for (const auto& [profile, use] : cases)
        for (const InkStorage storage : {InkStorage::ink, InkStorage::paper}) {
            InputNotes notes;
            notes.profile = profile;
            const InkConverter converter(notes, storage);
            EXPECT_EQ(notes.profileUse, use);
            EXPECT_TRUE(notes.inks && notes.profile.empty());
            Bytes inks(4 * 500), rgbRow(3 * 500);
            std::generate(inks.begin(), inks.end(), [&] { return random() & 0xFF; });
            converter.ConvertRow(inks.data(), 500, rgbRow.data());
            for (std::size_t n = 0; n < 500; ++n) {
                double left[4]; // of the paper
                for (std::size_t c = 0; c < 4; ++c)
                    left[c] =
                        (storage == InkStorage::ink ? 255 - inks[4 * n + c] : inks[4 * n + c]) /
                        255.0;
                const double lightness = 10 * left[0] + 20 * left[1] + 30 * left[2] + 40 * left[3];
                for (std::size_t c = 0; c < 3; ++c) {
                    const int expected =
                        use == converted ? StandardLevel(LightOf(lightness))
                                         : static_cast<int>(std::lround(255 * left[c] * left[3]));
                    EXPECT_NEAR(rgbRow[3 * n + c], expected, use == converted ? 1 : 0)
                        << "pixel " << n << ", channel " << c;
                }
            }
        }
}
