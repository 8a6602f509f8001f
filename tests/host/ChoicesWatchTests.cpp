// What a person chose in the dialogs, chosen again by answers, makes the same file.
#include "ChoicesWatch.h"
#include "ModuleResources.h"
#include "Preset.h"
#include "RandomPictures.h"
#include "SavePicture.h"
#include "TemporaryFolder.h"
#include "TheModule.h"

#include <gtest/gtest.h>

#include <random>

namespace gif89 {
namespace {

constexpr RGBColor kTeal = {0x1010, 0x8080, 0x9090};

Picture MakeNoise() {
    Picture picture = MakePicture(Picture::Kind::rgbAlpha, 30, 40);
    const auto pixels = RandomPixels(PictureKind::noise, 30, 40, 4, 1);
    std::copy(pixels.begin(), pixels.end(), picture.pixels.get());
    picture.comment = "noise";
    return picture;
}

// Twelve colours, two of them alike, with its own transparency and a further channel.
Picture MakeIndexed() {
    Picture picture = MakePicture(Picture::Kind::indexed, 20, 25);
    picture.colors = 12;
    std::mt19937 random(2);
    const auto byte = [&random] { return static_cast<std::uint8_t>(random()); };
    std::generate_n(picture.pixels.get(), picture.PixelBytes(), [&] { return byte() % 12; });
    for (int i = 0; i < picture.colors; ++i)
        SetTableEntry(picture.table, i, {0, std::uint8_t(i * 20), std::uint8_t(255 - i * 9), 60});
    SetTableEntry(picture.table, 7, TableEntry(picture.table, 4));
    for (const char* name : {kTransparencyChannel, "cut"})
        std::generate_n(AddChannel(picture, name), picture.PixelBytes(), byte);
    return picture;
}

/// A cell of the indexed dialog's colour table.
Act PressCell(int entry) {
    return PressAt({369, static_cast<std::int16_t>(21 + 11 * entry)});
}

struct Repeated {
    Wishes choices;
    DecodedGif gif;
};

/// Exports once with acts in watched dialogs, once with the choices that were seen, and once with
/// these made before a person presses OK; all files must be equal.
Repeated Repeat(const Picture& picture, std::vector<Act> acts,
                ChoicesWatch::Marks marks = ChoicesWatch::Marks::asNumbers) {
    const TemporaryFolder folder;
    const auto save = [&](const char* name, const DialogUser& user) {
        SaveChecks checks;
        checks.keepIndices = true;
        const Destination there = {{}, folder.Path(name), -1, Existing::keep};
        return SavePicture(TheModule(), picture, name, there, user, checks).gif;
    };
    acts.push_back(PressItem(kOKItem));
    ScriptSource script(std::move(acts));
    ChoicesWatch watch(script, &script, picture);
    Repeated repeated;
    repeated.gif = save("first.gif", watch.User());
    EXPECT_EQ(script.Failure(), "");
    repeated.choices = watch.Choices(repeated.gif, marks);

    const Plan plan = std::get<Plan>(MakePlan(picture, repeated.choices));
    Answers answers(plan);
    save("second.gif", answers.User());
    EXPECT_NO_THROW(answers.ThrowFailure());
    EXPECT_TRUE(folder.Read("first.gif") == folder.Read("second.gif"));

    Answers before(plan, Answers::End::leavesOpen);
    ScriptSource person({PressItem(kOKItem)});
    Preset preset(before, person, &person);
    save("third.gif", preset.User());
    EXPECT_EQ(person.Failure(), "");
    EXPECT_TRUE(folder.Read("first.gif") == folder.Read("third.gif"));
    return repeated;
}

TEST(ChoicesWatch, RepeatsWhatWasChosenForRGBPictures) {
    const TemporaryFolder folder;
    std::string table;
    for (int i = 0; i < 768; ++i) table += static_cast<char>(i * 7 + i / 5);
    const std::string file = folder.Write("some.zct", table);
    const std::string none = folder.Write("none.zct", "");
    const std::string empty = folder.Write("empty.zco", {'\0', '\1', '\0', '\0'});
    const Act adaptive = ChooseEntry(kRGBPalettePopUpItem, kAdaptiveEntry),
              fixed = ChooseEntry(kRGBPalettePopUpItem, kFixedEntry);
    const std::pair<const char*, std::vector<Act>> cases[] = {
        {"count", {SetText(kRGBCountItem, "17")}},
        {"boxes", {PressItem(kRGBInterlaceItem), PressItem(kRGBCommentItem)}},
        {"there and back", {fixed, adaptive}},
        {"fixed", {fixed}},
        {"fixed, cut", {fixed, PressItem(kRGBResizeItem), SetText(kRGBCountItem, "9")}},
        {"file", {PressItem(kRGBLoadItem), PickFile(file)}},
        {"file kept after one that is none",
         {PressItem(kRGBLoadItem), PickFile(file), PressItem(kRGBLoadItem), PickFile(none)}},
        {"file after one without colours",
         {PressItem(kRGBLoadItem), PickFile(empty), PickFile(file)}},
        {"file left again", {PressItem(kRGBLoadItem), PickFile(file), fixed}},
        {"matte", {PressItem(kRGBColorBoxItem), PickColor(kTeal)}},
        {"matte refused", {PressItem(kRGBColorBoxItem), CancelColor()}},
        {"reset",
         {PressItem(kRGBInterlaceItem), PressItem(kRGBColorBoxItem), PickColor(kTeal),
          HoldKey(kKeyOption), PressItem(kCancelItem), ReleaseKey(kKeyOption)}}};
    for (const auto& [name, acts] : cases) {
        SCOPED_TRACE(name);
        Repeat(MakeNoise(), acts);
    }
}

TEST(ChoicesWatch, RepeatsWhatWasChosenForIndexedPictures) {
    const Act none = ChooseEntry(kIndexedChannelItem, kNoChannelEntry),
              cut = ChooseEntry(kIndexedChannelItem, "cut"),
              own = ChooseEntry(kIndexedChannelItem, kTransparencyChannel),
              hold = HoldKey(kKeyOption), release = ReleaseKey(kKeyOption);
    const std::pair<const char*, std::vector<Act>> cases[] = {
        {"no transparency", {none, PressItem(kIndexedInterlaceItem)}},
        {"marks",
         {none, PressItem(kIndexedDropperItem), PressCell(3), PressCell(9),
          PressItem(kIndexedSwatchItem), PickColor(kTeal)}},
        {"one of two alike", {none, PressItem(kIndexedDropperItem), PressCell(4)}},
        {"channel", {cut}},
        {"channel, inverted", {hold, cut, release}},
        {"own, inverted",
         {none, hold, own, release, PressItem(kIndexedSwatchItem), PickColor(kTeal)}}};
    for (const auto marks : {ChoicesWatch::Marks::asNumbers, ChoicesWatch::Marks::asColors})
        for (const auto& [name, acts] : cases) {
            SCOPED_TRACE(name);
            Repeat(MakeIndexed(), acts, marks);
        }
}

TEST(ChoicesWatch, NamesMarksByColorsOnlyWhereThatMeansTheSame) {
    const std::vector<Act> acts = {ChooseEntry(kIndexedChannelItem, kNoChannelEntry),
                                   PressItem(kIndexedDropperItem), PressCell(3),
                                   PressCell(4)}; // looks like 7
    using Names = std::vector<std::string>;
    const auto named = [&](ChoicesWatch::Marks marks) {
        Names names;
        for (const EntryName& name : Repeat(MakeIndexed(), acts, marks).choices.transparent)
            names.push_back(name.index() == 0
                                ? std::to_string(std::get<int>(name))
                                : std::to_string(PackColor(std::get<RGBtuple>(name))));
        return names;
    };
    EXPECT_EQ(named(ChoicesWatch::Marks::asNumbers), (Names{"3", "4"}));
    EXPECT_EQ(named(ChoicesWatch::Marks::asColors), (Names{std::to_string(0x3ce43c), "4"}));
}

// Choices are made again for other pictures, too: what was left alone must not bind those.
TEST(ChoicesWatch, LeavesOpenWhatWasLeftAlone) {
    const Wishes rgb = Repeat(MakeNoise(), {}).choices;
    EXPECT_FALSE(rgb.interlace || rgb.comment || rgb.matte || rgb.colors || rgb.resize);
    EXPECT_EQ(rgb.palette, PaletteKind::open);

    const Picture picture = MakeIndexed();
    const Repeated indexed = Repeat(picture, {});
    EXPECT_EQ(indexed.choices.alpha, "");
    EXPECT_TRUE(indexed.choices.transparent.empty());
    EXPECT_FALSE(indexed.choices.dropOwn || indexed.choices.invert);
    // A person who only presses OK keeps the holes of the picture.
    for (std::size_t n = 0; n < picture.PixelBytes(); ++n)
        ASSERT_EQ(indexed.gif.indices[n] == indexed.gif.transparentIndex,
                  picture.channels[0].bytes[n] < 128)
            << "pixel " << n;
}

} // namespace
} // namespace gif89
