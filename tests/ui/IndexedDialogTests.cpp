// Whole exports of indexed pictures through the options dialog, read back by an outside decoder and
// compared with what the same choices come to when they are worked out plainly.
#include "IndexedSession.h"

#include "MemoryManager.h"
#include "ModuleResources.h"

#include <algorithm>

namespace {

constexpr unsigned kSeed = 20261;

Act Press(int cell) {
    return PressAt(Cell(cell));
}
Act Paint(int from, int to) {
    std::vector<Point> points;
    for (int cell = from; cell <= to; ++cell) points.push_back(Cell(cell));
    return Drag(points);
}
Act TakeChannel(int channel) {
    return ChooseEntry(kIndexedChannelItem, static_cast<short>(channel + 1));
}
Act LeaveChannel() {
    return ChooseEntry(kIndexedChannelItem, kNoChannelEntry);
}
Steps WithOption(const Steps& steps) {
    return Holding({kKeyOption}, steps);
}
Steps WithCommand(const Steps& steps) {
    return Holding({kKeyCommand}, steps);
}

TEST(IndexedExport, WritesWhatWasChosen) {
    std::vector<int> gaps = IndicesUpTo(20);
    gaps.erase(gaps.begin() + 2); // index 2 is in the table only
    const IndexedPicture some = MakePicture(30, 40, gaps, 24, 2, kSeed);
    const IndexedPicture plain = MakePicture(30, 40, gaps, 24, 0, kSeed);
    const IndexedPicture full = MakePicture(40, 41, IndicesUpTo(256), 256, 2, kSeed);
    // Every pixel is visible; indices 0, 1 and 200 are the rarest, and 200 is what is given up.
    std::vector<int> often = IndicesUpTo(256);
    for (int i = 2; i < 256; ++i)
        if (i != 200) often.push_back(i);
    IndexedPicture black = MakePicture(1, static_cast<int>(often.size()), often, 256, 1, kSeed);
    std::fill(black.channels[0].begin(), black.channels[0].end(), std::uint8_t{255});
    SetTableEntry(black.table, 200, {});
    IndexedPicture nearBlack = black;
    SetTableEntry(nearBlack.table, 200, {0, 1, 1, 0});
    const std::vector<int> entries = IndicesUpTo(24);
    const Act swatch = PressItem(kIndexedSwatchItem), red = PickColor({0xFFFF, 0x12FF, 0x0000});
    const Act interlace = PressItem(kIndexedInterlaceItem),
              comment = PressItem(kIndexedCommentItem);
    const Steps reset = WithOption({PressItem(kCancelItem)});
    const Choice redMarks = {{3, 4}, 0, false, {0, 255, 0x12, 0}};
    const Choice redChannel = {{}, 1, false, {0, 255, 0x12, 0}};
    const struct {
        const char* name;
        const IndexedPicture& picture;
        Steps steps;
        Choice choice;
        std::size_t requests = 1; ///< of the host: the indices, and each channel when it is chosen
    } cases[] = {
        {"nothing", some, {}, {}},
        {"one mark, one plane", plain, {Press(5)}, {{5}}},
        {"several marks", some, {Press(7), Press(3), Press(19)}, {{3, 7, 19}}},
        {"every entry", some, {Paint(0, 23)}, {{entries.begin(), entries.end()}}},
        {"marks of absent colours", some, {Press(21), Press(23)}, {{21, 23}}},
        {"the lowest mark absent", some, {Press(9), Press(2)}, {{2, 9}}},
        {"marks in a full table", full, {Press(0), Press(128), Press(255)}, {{0, 128, 255}}},
        {"mark and unmark",
         some,
         Steps{Press(4), Press(6)} + WithCommand({Press(4), Press(8)}),
         {{6}}},
        {"a channel, all 256 visible", full, {TakeChannel(1)}, {{}, 1}, 2},
        {"black is given up", black, {TakeChannel(1)}, {{}, 1}, 2},
        {"almost black is given up", nearBlack, {TakeChannel(1)}, {{}, 1}, 2},
        {"an inverted channel", some, WithOption({TakeChannel(1)}), {{}, 1, true}, 2},
        {"the flip of a channel",
         some,
         Steps{TakeChannel(2)} + WithOption({TakeChannel(2)}),
         {{}, 2, true},
         2},
        {"a channel inverted and turned back",
         some,
         WithOption({TakeChannel(2)}) + Steps{TakeChannel(2)},
         {{}, 2},
         2},
        {"one channel, then the other", some, {TakeChannel(1), TakeChannel(2)}, {{}, 2}, 3},
        {"a channel over marks", some, {Press(5), TakeChannel(1), Press(6)}, {{}, 1}, 2},
        {"marks kept behind a channel", some, {Press(5), TakeChannel(1), LeaveChannel()}, {{5}}, 2},
        {"a channel, none, and it again",
         some,
         {TakeChannel(1), LeaveChannel(), TakeChannel(1)},
         {{}, 1},
         2},
        {"a colour, then a mark more", some, {Press(3), swatch, red, Press(4)}, redMarks},
        {"a colour for a channel", some, {TakeChannel(1), swatch, red}, redChannel, 2},
        {"no colour picked", some, {Press(3), swatch, CancelColor()}, {{3}}},
        {"reset of marks and colour", some, Steps{Press(3), swatch, red} + reset, {}},
        {"reset of a channel", some, Steps{TakeChannel(1)} + reset + Steps{Press(2)}, {{2}}, 2},
        {"reset, then the channel",
         some,
         Steps{TakeChannel(1), swatch, red} + reset + Steps{TakeChannel(1)},
         {{}, 1},
         2},
        {"reset keeps the check boxes", some, Steps{interlace} + reset, {.interlaced = false}},
        {"no comment", some, {interlace, comment, interlace}, {.comment = false}},
    };
    for (const auto& c : cases) {
        IndexedSession session(c.picture);
        EXPECT_EQ(session.Play(c.steps), noErr) << c.name;
        EXPECT_EQ(Difference(session.File(), ExportPlainly(c.picture, c.choice)), "")
            << c.name << ", seed " << kSeed;
        EXPECT_EQ(session.requests.size(), c.requests) << c.name;
    }
}

// One index more than the table has room for makes the table grow: readers must find every index.
TEST(IndexedExport, MakesRoomForHiddenPixelsInTablesOfEverySize) {
    for (const int colors : {1, 2, 3, 4, 5, 16, 17, 64, 128, 255, 256}) {
        IndexedPicture picture = MakePicture(30, 20, IndicesUpTo(colors), colors, 1, kSeed);
        for (const int mask : {127, 128}) {
            // Every entry stays visible; the picture's last rows may be hidden.
            std::copy_n(IndicesUpTo(colors).begin(), colors, picture.indices.begin());
            std::fill_n(picture.channels[0].begin(), 400, std::uint8_t{255});
            std::fill(picture.channels[0].begin() + 400, picture.channels[0].end(), mask);
            IndexedSession session(picture);
            EXPECT_EQ(session.Play({TakeChannel(1)}), noErr) << colors;
            const GiflibPicture file = session.File();
            EXPECT_EQ(Difference(file, ExportPlainly(picture, {{}, 1})), "")
                << colors << " colours, mask byte " << mask << ", seed " << kSeed;
            EXPECT_EQ(file.transparentIndex >= 0, mask < 128) << colors;
        }
    }
}

TEST(IndexedDialog, EndsWithoutAFileWithEscape) {
    IndexedSession session(MakePicture(5, 6, IndicesUpTo(3), 3, 1, kSeed));
    EXPECT_EQ(session.Play({Press(1), PressKey(kKeyEscape)}), userCanceledErr);
    EXPECT_EQ(session.file, "");
}

/// What is marked, one digit for each of the first entries.
std::string Marks(DialogPtr dialog, int entries) {
    std::string marks;
    for (int i = 0; i < entries; ++i) marks += GlobalsOf(dialog)->transMap[i] != 0 ? '1' : '0';
    return marks;
}

TEST(IndexedDialog, PaintsAndErasesAcrossCells) {
    const IndexedPicture picture = MakePicture(8, 8, IndicesUpTo(10), 10, 1, kSeed);
    const Steps minus = WithOption({PressItem(kIndexedDropperItem)});
    const Act outAndBack = Drag({Cell(2), Cell(40), {2, 2}, Cell(4)});
    const struct {
        const char* name;
        Steps steps;
        const char* want;
    } cases[] = {
        {"a stroke past the used cells", {Paint(6, 14)}, "0000001111"},
        {"a stroke out of the table and back", {outAndBack}, "0010100000"},
        {"erasing", Steps{Paint(1, 8)} + WithCommand({Paint(3, 5)}), "0110001110"},
        {"with the minus eyedropper", Steps{Paint(1, 4)} + minus + Steps{Paint(2, 3)},
         "0100100000"},
        {"shift against minus", minus + Holding({kKeyShift}, {Press(7)}), "0000000100"},
        {"shift against command", Holding({kKeyShift, kKeyCommand}, {Press(7)}), "0000000100"},
        {"the hand does nothing", {PressItem(kIndexedHandItem), Press(3)}, "0000000000"},
        {"erasing everything", Steps{Paint(1, 3)} + WithCommand({Paint(0, 5)}), "0000000000"},
        {"nor does any key behind a channel",
         Steps{Press(3), TakeChannel(1)} + Holding({kKeyShift}, {Press(4)}), "0001000000"},
        {"a channel and none", {TakeChannel(1), LeaveChannel()}, "0000000000"},
        {"marks behind a channel", {Press(2), TakeChannel(1), LeaveChannel()}, "0010000000"},
    };
    for (const auto& c : cases) {
        const Look look = [&](DialogPtr dialog) {
            EXPECT_EQ(Marks(dialog, 10), c.want) << c.name;
            // The swatch can be used as long as something is transparent.
            const bool isUsable = !dialog->Item(kIndexedSwatchItem)->IsDisabled();
            EXPECT_EQ(isUsable, std::string(c.want) != "0000000000") << c.name;
        };
        EXPECT_EQ(IndexedSession(picture).Play(c.steps + Steps{look}), noErr) << c.name;
    }
}

TEST(IndexedDialog, TakesAnIndexEqualToTheCountInThePreviewOnly) {
    IndexedPicture picture = MakePicture(1, 3, {4, 5, 6}, 7, 0, kSeed);
    picture.indices = {4, 5, 6};
    const Look cutTable = [](DialogPtr dialog) { GlobalsOf(dialog)->numColors = 5; };
    const auto expectAndClear = [](const char* want) -> Look {
        return [=](DialogPtr dialog) {
            EXPECT_EQ(Marks(dialog, 7), want);
            std::fill_n(GlobalsOf(dialog)->transMap, 256, std::uint8_t{0});
        };
    };
    // The picture's three pixels in the middle of the preview, and their cells.
    EXPECT_EQ(IndexedSession(picture).Play(
                  {cutTable, PressAt(InPreview(150, 199)), PressAt(InPreview(150, 200)),
                   PressAt(InPreview(150, 201)), expectAndClear("0000110"), Press(4), Press(5),
                   Press(6), expectAndClear("0000100")}),
              noErr);
}

TEST(IndexedDialog, ListsTheChannelsByName) {
    const long blocks = LiveMemoryBlocks();
    {
        IndexedSession session(MakePicture(3, 3, {0, 1}, 2, 4, kSeed));
        session.comment = "";
        session.channelNames = {"Sky", "", std::string(200, 'x')}; // none for the fourth
        const Look look = [](DialogPtr dialog) {
            std::vector<std::string> entries;
            for (const MenuEntry& entry : (*dialog->Item(kIndexedChannelItem)->menu)->entries)
                entries.push_back(entry.text);
            EXPECT_EQ(entries, (std::vector<std::string>{"None", "Sky", "Channel 2",
                                                         std::string(180, 'x'), "Channel 4"}));
        };
        EXPECT_EQ(session.Play({ChooseEntry(kIndexedChannelItem, "Channel 4"), look}), noErr);
        EXPECT_EQ(session.requests.back(), (HostRequest{{0, 0, 3, 3}, 4, 4}));
    }
    EXPECT_EQ(LiveMemoryBlocks(), blocks) << "of the names";
}

TEST(IndexedDialog, OffersNeitherChannelsNorACommentThatAreNotThere) {
    IndexedSession session(MakePicture(3, 3, {0, 1}, 2, 0, kSeed));
    session.comment = "";
    const Look look = [](DialogPtr dialog) {
        EXPECT_TRUE(dialog->Item(kIndexedChannelItem)->IsDisabled());
        EXPECT_TRUE(dialog->Item(kIndexedCommentItem)->IsDisabled());
    };
    EXPECT_EQ(session.Play({look}), noErr);
}

TEST(IndexedDialog, KeepsTheToolWhenAChannelIsChosenAgain) {
    const Look look = [](DialogPtr dialog) {
        EXPECT_EQ(GlobalsOf(dialog)->selectedTool, zoomInTool);
    };
    IndexedSession session(MakePicture(9, 9, IndicesUpTo(6), 6, 2, kSeed));
    EXPECT_EQ(session.Play({TakeChannel(1), PressItem(kIndexedZoomItem), TakeChannel(1), look}),
              noErr);
}

// Deliberate: the hand and the swatch come up although there is no mask.
TEST(IndexedDialog, KeepsItsChoiceWhenTheHostCannotDeliverAChannel) {
    const IndexedPicture picture = MakePicture(9, 9, IndicesUpTo(6), 6, 2, kSeed);
    IndexedSession session(picture);
    session.failAt = 2;
    const Look look = [](DialogPtr dialog) {
        EXPECT_EQ(GlobalsOf(dialog)->maskedData, nullptr);
        EXPECT_EQ(GlobalsOf(dialog)->selectedTool, handTool);
        EXPECT_FALSE(dialog->Item(kIndexedSwatchItem)->IsDisabled());
    };
    EXPECT_EQ(session.Play({Press(3), TakeChannel(1), look}), noErr);
    EXPECT_EQ(Difference(session.File(), ExportPlainly(picture, {{3}})), "");
}

TEST(IndexedDialog, ShowsResetWhileOptionIsHeldAndGoesBackToTheStart) {
    const auto expectTitle = [](const char* title) -> Look {
        return [=](DialogPtr dialog) { EXPECT_EQ(dialog->Item(kCancelItem)->text, title); };
    };
    const Look expectStart = [](DialogPtr dialog) {
        const IndexedDialogGlobals& g = *GlobalsOf(dialog);
        EXPECT_EQ(g.maskedData, nullptr);
        EXPECT_EQ(Marks(dialog, 6), "000000");
        EXPECT_EQ(g.selectedTool, eyeDropperPlusTool);
        EXPECT_EQ(GetPopUpMenuValue(dialog, kIndexedChannelItem), 1);
        EXPECT_TRUE(dialog->Item(kIndexedSwatchItem)->IsDisabled());
        EXPECT_FALSE(g.zoomButtonIsIn) << "the sides of the tool buttons stay";
    };
    const Act zoom = PressItem(kIndexedZoomItem), cancel = PressItem(kCancelItem);
    IndexedSession session(MakePicture(9, 9, IndicesUpTo(6), 6, 2, kSeed));
    EXPECT_EQ(session.Play(Steps{Press(3)} + WithOption({zoom}) +
                           Steps{TakeChannel(1), expectTitle("Cancel")} +
                           WithOption({Idle(1), expectTitle("Reset"), cancel, expectStart}) +
                           Steps{Idle(1), expectTitle("Cancel")}),
              noErr);
}

} // namespace
