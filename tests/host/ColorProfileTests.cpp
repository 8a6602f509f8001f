// Pictures with embedded profiles against the formulas that the profiles stand for.
#include "ColorProfile.h"
#include "MakeProfile.h"
#include "PictureFromBytes.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <utility>

using gif89::InputNotes;
using gif89::Picture;
using enum InputNotes::ProfileUse;
using enum Picture::Kind;

namespace {

constexpr int kEntries = 100; // of the tables
constexpr Picture::Kind kKinds[] = {indexed, rgb, rgbAlpha};

enum class Shades : bool { colors, greys };

Picture MakeRandom(Picture::Kind kind, int side, Shades shades = Shades::colors) {
    Picture picture = gif89::MakePicture(kind, side, side);
    const Bytes bytes = RandomBytes(picture.PixelBytes(), 1, kind == indexed ? kEntries : 256);
    std::copy(bytes.begin(), bytes.end(), picture.pixels.get());
    if (kind == indexed) {
        SetGreyRamp(picture, kEntries);
        if (shades == Shades::colors) picture.table = RandomTable(kEntries, 2);
    } else if (shades == Shades::greys) {
        const auto step = static_cast<std::size_t>(picture.BytesPerPixel());
        for (std::size_t n = 0; n < bytes.size(); n += step)
            std::fill_n(&picture.pixels[n], 3, bytes[n]);
    }
    return picture;
}

/// The level, 0..255, of a channel of what becomes of a color.
using Expect = std::function<int(const std::uint8_t* color, std::size_t channel)>;

// Compares the converted colors with those expected, give or take a level.
void CheckConversion(Picture picture, const Bytes& profile, const Expect& expect) {
    SCOPED_TRACE(testing::Message()
                 << picture.BytesPerPixel() << " bytes a pixel, side " << picture.rows);
    const Bytes before = ColorsOf(CopyPicture(picture));
    picture.notes.profile = profile;
    ApplyProfile(picture);
    EXPECT_EQ(picture.notes.profileUse, converted);
    EXPECT_TRUE(picture.notes.profile.empty());
    EXPECT_EQ(PackColor(TableEntry(picture.table, kEntries)), 0U) << "an entry that is not used";
    const Bytes after = ColorsOf(std::move(picture));
    for (std::size_t n = 0; n < before.size(); n += 4) {
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(after[n + channel], expect(&before[n], channel), 1)
                << "pixel " << n / 4 << ", channel " << channel;
        EXPECT_EQ(after[n + 3], before[n + 3]) << "pixel " << n / 4;
    }
}

void CheckUntouched(Picture picture, const Bytes& profile, InputNotes::ProfileUse use) {
    const Bytes before = ColorsOf(CopyPicture(picture));
    picture.notes.profile = profile;
    ApplyProfile(picture);
    EXPECT_EQ(picture.notes.profileUse, use);
    EXPECT_EQ(ColorsOf(std::move(picture)), before);
}

int Encode(int level, double gamma) {
    return StandardLevel(std::pow(level / 255.0, gamma));
}

} // namespace

TEST(ApplyProfile, ConvertsColorsOfEveryKind) {
    const Bytes swapped = MakeRgbProfile(1.5, Primaries::redAndGreenSwapped);
    // The side of 120 is enough for the shortcut over many pixels.
    for (const auto& [kind, side] :
         {std::pair{indexed, 9}, {rgb, 9}, {rgbAlpha, 9}, {rgb, 120}, {rgbAlpha, 120}}) {
        CheckConversion(MakeRandom(kind, side), MakeRgbProfile(1),
                        [](const auto* color, auto channel) { return Encode(color[channel], 1); });
        CheckConversion(MakeRandom(kind, side), swapped, [](const auto* color, auto channel) {
            return Encode(color[channel == 2 ? 2 : 1 - channel], 1.5);
        });
    }
}

TEST(ApplyProfile, KeepsGreysGrey) {
    for (const Picture::Kind kind : kKinds) {
        Picture picture = MakeRandom(kind, 20, Shades::greys);
        for (const Bytes& profile : {MakeRgbProfile(1.4), MakeGreyProfile(1.4)})
            CheckConversion(CopyPicture(picture), profile,
                            [](const auto* color, auto) { return Encode(*color, 1.4); });
        picture.notes.profile = MakeGreyProfile(1.4);
        ApplyProfile(picture);
        const Bytes colors = ColorsOf(std::move(picture));
        for (std::size_t n = 0; n < colors.size(); n += 4)
            EXPECT_TRUE(colors[n] == colors[n + 1] && colors[n] == colors[n + 2]) << n / 4;
    }
}

TEST(ApplyProfile, LeavesStandardColorsUntouched) {
    for (const Picture::Kind kind : kKinds)
        CheckUntouched(MakeRandom(kind, 120), MakeStandardProfile(), same);
    Picture picture = MakeRandom(rgb, 1);
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
    for (const Picture::Kind kind : kKinds)
        for (const Bytes& profile : {MakeInkProfile(), MakeGreyProfile(1.4), MakeLinkProfile()})
            CheckUntouched(MakeRandom(kind, 9), profile, unusable);
}

TEST(ApplyProfile, LeavesPicturesAloneWhereTheProfileIsCut) {
    const Bytes profile = MakeRgbProfile(1);
    for (std::size_t length = 1; length < profile.size() - 52; ++length) // up to the curves
        CheckUntouched(MakeRandom(rgb, 2), Bytes(profile.data(), profile.data() + length),
                       unusable);
}

// What is right with a profile and without one is seen in JPEG pictures of both storages.
TEST(InkConverter, MultipliesWhereTheProfileIsOfNoUse) {
    for (const Bytes& profile : {MakeRgbProfile(1), Bytes(9)}) {
        InputNotes notes;
        notes.profile = profile;
        const gif89::InkConverter converter(notes, gif89::InkStorage::ink);
        EXPECT_EQ(notes.profileUse, unusable);
        EXPECT_TRUE(notes.inks && notes.profile.empty());
        const Bytes inks = {0, 255, 51, 102};
        Bytes color(3);
        converter.ConvertRow(inks.data(), 1, color.data());
        EXPECT_EQ(color, (Bytes{153, 0, 122}));
    }
}
