// What a person chose in the dialogs, chosen again by the operator, makes the same file.
#include "ChoicesWatch.h"
#include "SavePicture.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <random>

namespace gif89 {
namespace {

constexpr short kOK = 1, kCancelOrReset = 2;
constexpr short kRGBLoad = 3, kRGBMatte = 4, kRGBPalette = 10, kRGBCount = 13, kRGBInterlace = 15,
                kRGBComment = 16, kRGBResize = 18;
constexpr short kIndexedInterlace = 6, kIndexedDropper = 11, kIndexedMatte = 12, kChannels = 16;
constexpr RGBColor kTeal = {0x1010, 0x8080, 0x9090};

const ExportModule& TheModule() {
    static const ExportModule module(ExportModule::DefaultPath());
    return module;
}

void Fill(std::uint8_t* bytes, std::size_t count, int range, std::mt19937& random) {
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(random() % static_cast<unsigned>(range));
}

Picture MakeNoise(bool alpha, std::mt19937& random) {
    Picture picture = MakePicture(alpha ? Picture::Kind::rgbAlpha : Picture::Kind::rgb, 30, 40);
    Fill(picture.pixels.get(), picture.PixelBytes(), 256, random);
    picture.comment = "noise";
    return picture;
}

// Twelve colours, two of them alike, with its own transparency and a further channel.
Picture MakeIndexed(std::mt19937& random) {
    Picture picture = MakePicture(Picture::Kind::indexed, 20, 25);
    picture.colors = 12;
    Fill(picture.pixels.get(), picture.PixelBytes(), picture.colors, random);
    for (int i = 0; i < picture.colors; ++i)
        SetTableEntry(picture.table, i, {0, std::uint8_t(i * 20), std::uint8_t(255 - i * 9), 60});
    SetTableEntry(picture.table, 7, TableEntry(picture.table, 4));
    for (const char* name : {kTransparencyChannel, "cut"}) {
        auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(picture.PixelBytes());
        Fill(bytes.get(), picture.PixelBytes(), 256, random);
        picture.channels.push_back({name, std::move(bytes)});
    }
    return picture;
}

/// A cell of the indexed dialog's colour table.
Act PressCell(int entry) {
    return PressAt({369, static_cast<std::int16_t>(21 + 11 * entry)});
}

/// Exports once with acts in watched dialogs and once with the choices that were seen; the second
/// file must equal the first. Gives the choices.
ExportChoices Repeat(const Picture& picture, std::vector<Act> acts,
                     ChoicesWatch::Marks marks = ChoicesWatch::Marks::asNumbers) {
    const TemporaryFolder folder;
    acts.push_back(PressItem(kOK));
    ScriptSource script(std::move(acts));
    ChoicesWatch watch(script, &script, picture);
    const Destination first = {{}, folder.Path("first.gif"), -1, Existing::keep};
    SavedGif saved;
    try {
        SaveChecks checks;
        checks.keepIndices = true;
        saved = SavePicture(TheModule(), picture, "first", first, {&watch, &watch}, checks);
    } catch (const Problem& problem) {
        ADD_FAILURE() << problem.what() << ": " << script.Failure();
        return {};
    }
    const ExportChoices choices = watch.Choices(saved.gif, marks);

    Operator user(picture, choices);
    const Destination second = {{}, folder.Path("second.gif"), -1, Existing::keep};
    EXPECT_NO_THROW(
        SavePicture(TheModule(), picture, "second", second, {&user.Events(), &user.Files()}));
    EXPECT_NO_THROW(user.ThrowFailure());
    EXPECT_TRUE(folder.Read("first.gif") == folder.Read("second.gif"));
    return choices;
}

TEST(ChoicesWatch, RepeatsWhatWasChosenForRGBPictures) {
    std::mt19937 random(1);
    const TemporaryFolder folder;
    std::string table(768, '\0');
    Fill(reinterpret_cast<std::uint8_t*>(table.data()), table.size(), 256, random);
    const std::string file = folder.Write("noise.zct", table);
    const struct {
        const char* name;
        std::vector<Act> acts;
    } cases[] = {
        {"as it comes", {}},
        {"count", {SetText(kRGBCount, "17")}},
        {"boxes", {PressItem(kRGBInterlace), PressItem(kRGBComment)}},
        {"there and back", {ChooseEntry(kRGBPalette, 3), ChooseEntry(kRGBPalette, 2)}},
        {"fixed", {ChooseEntry(kRGBPalette, 3)}},
        {"fixed, cut",
         {ChooseEntry(kRGBPalette, 3), PressItem(kRGBResize), SetText(kRGBCount, "9")}},
        {"file", {PressItem(kRGBLoad), PickFile(file)}},
        {"file left again", {PressItem(kRGBLoad), PickFile(file), ChooseEntry(kRGBPalette, 3)}},
        {"matte", {PressItem(kRGBMatte), PickColor(kTeal)}},
        {"matte refused", {PressItem(kRGBMatte), CancelColor()}},
        {"reset",
         {PressItem(kRGBInterlace), PressItem(kRGBMatte), PickColor(kTeal), HoldKey(kKeyOption),
          PressItem(kCancelOrReset), ReleaseKey(kKeyOption)}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Repeat(MakeNoise(true, random), c.acts);
    }
}

TEST(ChoicesWatch, RepeatsWhatWasChosenForIndexedPictures) {
    std::mt19937 random(2);
    const Act none = ChooseEntry(kChannels, 1);
    const struct {
        const char* name;
        std::vector<Act> acts;
    } cases[] = {
        {"as it comes", {}},
        {"no transparency", {none, PressItem(kIndexedInterlace)}},
        {"marks",
         {none, PressItem(kIndexedDropper), PressCell(3), PressCell(9), PressItem(kIndexedMatte),
          PickColor(kTeal)}},
        {"one of two alike", {none, PressItem(kIndexedDropper), PressCell(4)}},
        {"channel", {ChooseEntry(kChannels, "cut")}},
        {"channel, inverted",
         {HoldKey(kKeyOption), ChooseEntry(kChannels, "cut"), ReleaseKey(kKeyOption)}},
        {"own, inverted",
         {none, HoldKey(kKeyOption), ChooseEntry(kChannels, kTransparencyChannel),
          ReleaseKey(kKeyOption), PressItem(kIndexedMatte), PickColor(kTeal)}},
    };
    for (const auto marks : {ChoicesWatch::Marks::asNumbers, ChoicesWatch::Marks::asColors})
        for (const auto& c : cases) {
            SCOPED_TRACE(c.name);
            Repeat(MakeIndexed(random), c.acts, marks);
        }
}

TEST(ChoicesWatch, NamesMarksByColorsOnlyWhereThatMeansTheSame) {
    std::mt19937 random(5);
    const std::vector<Act> acts = {ChooseEntry(kChannels, 1), PressItem(kIndexedDropper),
                                   PressCell(3), PressCell(4)}; // 4 looks like 7
    EXPECT_EQ(Repeat(MakeIndexed(random), acts, ChoicesWatch::Marks::asNumbers).transparent,
              (std::vector<std::string>{"3", "4"}));
    EXPECT_EQ(Repeat(MakeIndexed(random), acts, ChoicesWatch::Marks::asColors).transparent,
              (std::vector<std::string>{"#3ce43c", "4"}));
}

// Choices are made again for other pictures, too: what was left alone must not bind those.
TEST(ChoicesWatch, LeavesOpenWhatWasLeftAlone) {
    std::mt19937 random(3);
    const ExportChoices rgb = Repeat(MakeNoise(false, random), {});
    EXPECT_FALSE(rgb.interlace || rgb.comment || rgb.matte || rgb.colors || rgb.resize);
    EXPECT_EQ(rgb.palette, "");
    const ExportChoices indexed = Repeat(MakeIndexed(random), {});
    EXPECT_EQ(indexed.alpha, "");
    EXPECT_FALSE(indexed.opaque || indexed.invert || !indexed.transparent.empty());
}

// A person who only presses OK keeps the holes of the picture.
TEST(ChoicesWatch, ProposesThePicturesOwnTransparency) {
    std::mt19937 random(4);
    const TemporaryFolder folder;
    const Picture picture = MakeIndexed(random);
    ScriptSource script({PressItem(kOK)});
    ChoicesWatch watch(script, nullptr, picture);
    const Destination there = {{}, folder.Path("a.gif"), -1, Existing::keep};
    SaveChecks checks;
    checks.keepIndices = true;
    const SavedGif saved = SavePicture(TheModule(), picture, "a", there, {&watch, &watch}, checks);
    for (std::size_t n = 0; n < picture.PixelBytes(); ++n)
        ASSERT_EQ(saved.gif.indices[n] == saved.gif.transparentIndex,
                  picture.channels[0].bytes[n] < 128)
            << "pixel " << n;
}

} // namespace
} // namespace gif89
