// Whole exports of indexed pictures through the options dialog, read back by an outside decoder and
// compared with what the same choices come to when they are worked out plainly.
#include "IndexedSession.h"

#include "FaultInjection.h"
#include "MemoryManager.h"

#include <algorithm>

namespace {

constexpr unsigned kSeed = 20261;

Act Press(int cell) {
    return PressAt(Cell(cell));
}
Act TakeChannel(int channel) {
    return ChooseEntry(kIndexedChannelItem, static_cast<short>(channel + 1));
}
std::vector<Act> PressAll(std::vector<int> cells) {
    std::vector<Act> acts;
    for (const int cell : cells) acts.push_back(Press(cell));
    return acts;
}
Act Paint(int from, int to) {
    std::vector<Point> points;
    for (int cell = from; cell <= to; ++cell) points.push_back(Cell(cell));
    return Drag(points);
}
template <class... Each> std::vector<Act> List(Each... acts) {
    return {acts...};
}
std::vector<Act> WithOption(std::vector<Act> acts) {
    return Holding({kKeyOption}, acts);
}
std::vector<Act> WithCommand(std::vector<Act> acts) {
    return Holding({kKeyCommand}, acts);
}

TEST(IndexedExport, WritesWhatWasChosen) {
    OpenResources resources;
    std::vector<int> gaps = IndicesUpTo(20);
    gaps.erase(gaps.begin() + 2); // index 2 is in the table only
    const IndexedPicture some = MakePicture(30, 40, gaps, 24, 2, kSeed);
    const IndexedPicture plain = MakePicture(30, 40, gaps, 24, 0, kSeed);
    const IndexedPicture full = MakePicture(40, 41, IndicesUpTo(256), 256, 2, kSeed);
    const Act none = ChooseEntry(kIndexedChannelItem, kNoChannelEntry);
    const struct {
        const char* name;
        const IndexedPicture& picture;
        std::vector<Act> acts;
        Choice choice;
        std::size_t requests = 1; ///< of the host: the indices, and each channel when it is chosen
    } cases[] = {
        {"nothing", some, {}, {}},
        {"nothing, one plane", plain, {}, {}},
        {"one mark", some, {Press(5)}, {{5}}},
        {"one mark, one plane", plain, {Press(5)}, {{5}}},
        {"the last mark", some, {Press(23), Press(19)}, {{19, 23}}},
        {"several marks", some, PressAll({7, 3, 19}), {{3, 7, 19}}},
        {"every entry", some, {Paint(0, 23)}, Choice{{0,  1,  2,  3,  4,  5,  6,  7,
                                                      8,  9,  10, 11, 12, 13, 14, 15,
                                                      16, 17, 18, 19, 20, 21, 22, 23}}},
        {"marks of absent colours", some, PressAll({21, 23}), {{21, 23}}},
        {"the lowest mark absent", some, PressAll({9, 2}), {{2, 9}}},
        {"marks in a full table", full, PressAll({0, 128, 255}), {{0, 128, 255}}},
        {"mark and unmark",
         some,
         Acts({PressAll({4, 6}), WithCommand({Press(4), Press(8)})}),
         {{6}}},
        {"a channel", some, {TakeChannel(1)}, {{}, 1}, 2},
        {"a channel, all 256 visible", full, {TakeChannel(1)}, {{}, 1}, 2},
        {"an inverted channel", some, WithOption({TakeChannel(1)}), {{}, 1, true}, 2},
        {"the flip of a channel",
         some,
         Acts({{TakeChannel(2)}, WithOption({TakeChannel(2)})}),
         {{}, 2, true},
         2},
        {"the flip and back",
         full,
         Acts({WithOption({TakeChannel(1)}), {TakeChannel(1)}}),
         {{}, 1},
         2},
        {"the same channel again", some, {TakeChannel(1), TakeChannel(1)}, {{}, 1}, 2},
        {"one channel, then the other", some, {TakeChannel(1), TakeChannel(2)}, {{}, 2}, 3},
        {"a channel over marks", some, {Press(5), TakeChannel(1), Press(6)}, {{}, 1}, 2},
        {"marks kept behind a channel", some, {Press(5), TakeChannel(1), none}, {{5}}, 2},
        {"a channel and none", some, {TakeChannel(1), none}, {}, 2},
        {"a channel, none, and it again", some, {TakeChannel(1), none, TakeChannel(1)}, {{}, 1}, 2},
    };
    for (const auto& c : cases) {
        IndexedSession session(c.picture);
        EXPECT_EQ(session.Play(c.acts), "0") << c.name;
        EXPECT_EQ(Difference(session.File(), ExportPlainly(c.picture, c.choice)), "")
            << c.name << ", seed " << kSeed;
        EXPECT_EQ(session.run.host.requests.size(), c.requests) << c.name;
    }
}

// One index more than the table has room for makes the table grow: readers must find every index.
TEST(IndexedExport, MakesRoomForHiddenPixelsInTablesOfEverySize) {
    OpenResources resources;
    for (const int colors : {1, 2, 3, 4, 5, 16, 17, 64, 128, 255, 256}) {
        IndexedPicture picture = MakePicture(30, 20, IndicesUpTo(colors), colors, 1, kSeed);
        for (const int hidden : {0, 127, 128, 255}) {
            // Every entry stays visible; the picture's last rows may be hidden.
            std::fill(picture.channels[0].begin(), picture.channels[0].end(), std::uint8_t{255});
            picture.indices.resize(600);
            for (int i = 0; i < colors; ++i)
                picture.indices[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
            std::fill(picture.channels[0].begin() + 400, picture.channels[0].end(),
                      static_cast<std::uint8_t>(hidden));
            IndexedSession session(picture);
            EXPECT_EQ(session.Play({TakeChannel(1)}), "0") << colors;
            const GiflibPicture file = session.File();
            EXPECT_EQ(Difference(file, ExportPlainly(picture, {{}, 1})), "")
                << colors << " colours, mask byte " << hidden << ", seed " << kSeed;
            EXPECT_EQ(file.transparentIndex >= 0, hidden < 128) << colors;
        }
    }
}

TEST(IndexedExport, TakesOptionsColourAndResetFromTheDialog) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(20, 30, IndicesUpTo(12), 14, 1, kSeed);
    const Act swatch = PressItem(kIndexedSwatchItem), reset = PressItem(kIndexedCancelItem);
    const Act red = PickColor({0xFFFF, 0x12FF, 0x0000});
    const RGBtuple redEntry = {0, 255, 0x12, 0};
    const struct {
        const char* name;
        std::vector<Act> acts;
        Choice choice;
        bool interlaced = true, comment = true;
    } cases[] = {
        {"not interlaced", {PressItem(kIndexedInterlaceItem)}, {}, false},
        {"no comment", {PressItem(kIndexedCommentItem)}, {}, true, false},
        {"clicked twice", {PressItem(6), PressItem(7), PressItem(6), PressItem(7)}, {}},
        {"a colour, then a mark more",
         {Press(3), swatch, red, Press(4)},
         {{3, 4}, 0, false, redEntry}},
        {"a colour for a channel", {TakeChannel(1), swatch, red}, {{}, 1, false, redEntry}},
        {"no colour picked", {Press(3), swatch, CancelColor()}, {{3}}},
        {"reset of marks and colour", Acts({{Press(3), swatch, red}, WithOption({reset})}), {}},
        {"reset of a channel", Acts({{TakeChannel(1)}, WithOption({reset}), {Press(2)}}), {{2}}},
        {"reset, then the channel",
         Acts({{TakeChannel(1), swatch, red}, WithOption({reset}), {TakeChannel(1)}}),
         {{}, 1}},
        {"reset keeps the check boxes", Acts({{PressItem(6)}, WithOption({reset})}), {}, false},
    };
    for (const auto& c : cases) {
        IndexedSession session(picture);
        session.comment = "Beside the sea";
        EXPECT_EQ(session.Play(c.acts), "0") << c.name;
        GiflibPicture want = ExportPlainly(picture, c.choice);
        want.interlaced = c.interlaced;
        if (c.comment) want.comment = "Beside the sea";
        EXPECT_EQ(Difference(session.File(), want), "") << c.name << ", seed " << kSeed;
    }
}

TEST(IndexedDialog, EndsWithoutAFileWhenCancelled) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(5, 6, IndicesUpTo(3), 3, 1, kSeed);
    const std::vector<Act> ways[] = {{PressItem(kIndexedCancelItem)},
                                     {Press(1), PressKey(kKeyEscape)}};
    for (const auto& acts : ways) {
        IndexedSession session(picture);
        EXPECT_EQ(session.Play(acts), "-128");
        EXPECT_EQ(session.run.user.asked, 0);
    }
    IndexedSession unattended(picture);
    SetEventSource(nullptr);
    EXPECT_EQ(unattended.run.Export(), userCanceledErr) << "nobody is there";
}

/// What is marked, one digit for each of the first entries.
std::string Marks(DialogPtr dialog, int entries) {
    std::string marks;
    for (int i = 0; i < entries; ++i) marks += GlobalsOf(dialog)->transMap[i] != 0 ? '1' : '0';
    return marks;
}

TEST(IndexedDialog, PaintsAndErasesAcrossCells) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(8, 8, IndicesUpTo(10), 10, 1, kSeed);
    const Act minus = PressItem(11), hand = PressItem(9);
    const Act none = ChooseEntry(kIndexedChannelItem, kNoChannelEntry);
    const std::vector<Point> away = {Cell(2), Cell(40), {2, 2}, Cell(4)};
    const struct {
        const char* name;
        std::vector<Act> acts;
        const char* want;
    } cases[] = {
        {"a stroke past the used cells", {Paint(6, 14)}, "0000001111"},
        {"a stroke out of the table and back", {Drag(away)}, "0010100000"},
        {"erasing", Acts({{Paint(1, 8)}, WithCommand({Paint(3, 5)})}), "0110001110"},
        {"with the minus eyedropper", Acts({{Paint(1, 4)}, WithOption({minus}), {Paint(2, 3)}}),
         "0100100000"},
        {"shift against minus", Acts({WithOption({minus}), Holding({kKeyShift}, {Press(7)})}),
         "0000000100"},
        {"shift against command", Holding({kKeyShift, kKeyCommand}, {Press(7)}), "0000000100"},
        {"the hand does nothing", {hand, Press(3)}, "0000000000"},
        {"erasing everything", Acts({{Paint(1, 3)}, WithCommand({Paint(0, 5)})}), "0000000000"},
        {"nor does any key behind a channel",
         Acts({{Press(3), TakeChannel(1)}, Holding({kKeyShift}, {Press(4)})}), "0001000000"},
        {"a channel and none", {TakeChannel(1), none}, "0000000000"},
        {"marks behind a channel", {Press(2), TakeChannel(1), none}, "0010000000"},
    };
    for (const auto& c : cases) {
        IndexedSession session(picture);
        std::string marks;
        EXPECT_EQ(session.Play(c.acts,
                               [&](DialogPtr dialog) {
                                   marks = Marks(dialog, 10);
                                   // The swatch can be used as long as something is transparent.
                                   const bool usable =
                                       !dialog->Item(kIndexedSwatchItem)->IsDisabled();
                                   EXPECT_EQ(usable, marks.find('1') != std::string::npos)
                                       << c.name;
                                   return std::nullopt;
                               }),
                  "0")
            << c.name;
        EXPECT_EQ(marks, c.want) << c.name;
    }
}

TEST(IndexedDialog, TakesAnIndexEqualToTheCountInThePreviewOnly) {
    OpenResources resources;
    IndexedPicture picture = MakePicture(1, 3, {4, 5, 6}, 7, 0, kSeed);
    picture.indices = {4, 5, 6};
    IndexedSession session(picture);
    int asked = 0;
    std::string marks;
    EXPECT_EQ(session.Play(
                  {},
                  [&](DialogPtr dialog) -> std::optional<Act> {
                      IndexedDialogGlobals* const g = GlobalsOf(dialog);
                      g->numColors = 5;
                      const Rect& drawn = g->dstRect;
                      const int step = asked++;
                      if (step < 3)
                          return PressAt({drawn.top, static_cast<std::int16_t>(drawn.left + step)});
                      if (step == 3)
                          marks = Marks(dialog, 7), std::fill_n(g->transMap, 256, std::uint8_t{0});
                      if (step < 6) return Press(step + 1);
                      marks += " " + Marks(dialog, 7);
                      return std::nullopt;
                  }),
              "0");
    EXPECT_EQ(marks, "0000110 0000100");
}

TEST(IndexedDialog, ListsTheChannelsByName) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(3, 3, {0, 1}, 2, 4, kSeed);
    IndexedSession session(picture);
    session.channelNames = {"Sky", "", std::string(200, 'x')}; // the host fails for the fourth
    std::vector<std::string> entries;
    EXPECT_EQ(session.Play({ChooseEntry(kIndexedChannelItem, "Channel 4")},
                           [&](DialogPtr dialog) {
                               for (const MenuEntry& entry :
                                    (*dialog->Item(kIndexedChannelItem)->menu)->entries)
                                   entries.push_back(entry.text);
                               return std::nullopt;
                           }),
              "0");
    EXPECT_EQ(entries, (std::vector<std::string>{"None", "Sky", "Channel 2", std::string(180, 'x'),
                                                 "Channel 4"}));
    EXPECT_EQ(session.run.host.requests.back(), (HostRequest{{0, 0, 3, 3}, 4, 4}));
    // A picture with one plane has none, and here no comment.
    for (const Act& act : {ChooseEntry(kIndexedChannelItem, 1), PressItem(kIndexedCommentItem)}) {
        IndexedSession alone(MakePicture(3, 3, {0, 1}, 2, 0, kSeed));
        EXPECT_NE(alone.Play({act}).find("disabled"), std::string::npos);
    }
}

TEST(IndexedDialog, KeepsTheToolWhenAChannelIsChosenAgain) {
    OpenResources resources;
    IndexedSession session(MakePicture(9, 9, IndicesUpTo(6), 6, 2, kSeed));
    const std::vector<Act> acts = {TakeChannel(1), PressItem(10), TakeChannel(1)};
    EXPECT_EQ(session.Play(acts,
                           [](DialogPtr dialog) {
                               EXPECT_EQ(GlobalsOf(dialog)->selectedTool, zoomInTool);
                               return std::nullopt;
                           }),
              "0");
}

// Deliberate: the hand and the swatch come up although there is no mask.
TEST(IndexedDialog, KeepsItsChoiceWhenTheHostCannotDeliverAChannel) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(9, 9, IndicesUpTo(6), 6, 2, kSeed);
    IndexedSession session(picture);
    session.run.host.failAt = 2;
    EXPECT_EQ(session.Play({Press(3), TakeChannel(1)},
                           [&](DialogPtr dialog) {
                               EXPECT_EQ(GlobalsOf(dialog)->maskedData, nullptr);
                               EXPECT_EQ(GlobalsOf(dialog)->selectedTool, handTool);
                               EXPECT_FALSE(dialog->Item(kIndexedSwatchItem)->IsDisabled());
                               return std::nullopt;
                           }),
              "0");
    EXPECT_EQ(Difference(session.File(), ExportPlainly(picture, {{3}})), "");
}

TEST(IndexedDialog, ShowsResetWhileOptionIsHeldAndGoesBackToTheStart) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(9, 9, IndicesUpTo(6), 6, 2, kSeed);
    IndexedSession session(picture);
    std::vector<std::string> titles;
    const std::vector<Act> acts = Acts({{Press(3), PressItem(10)},
                                        WithOption({PressItem(10)}),
                                        {TakeChannel(1), Idle(1), HoldKey(kKeyOption), Idle(1)}});
    int asked = 0;
    EXPECT_EQ(session.Play(acts,
                           [&](DialogPtr dialog) -> std::optional<Act> {
                               titles.push_back(dialog->Item(kIndexedCancelItem)->text);
                               const IndexedDialogGlobals& g = *GlobalsOf(dialog);
                               if (asked++ == 0) return PressItem(kIndexedCancelItem);
                               if (asked == 2) {
                                   EXPECT_EQ(g.maskedData, nullptr);
                                   EXPECT_EQ(Marks(dialog, 6), "000000");
                                   EXPECT_EQ(g.selectedTool, eyeDropperPlusTool);
                                   EXPECT_EQ(GetPopUpMenuValue(dialog, kIndexedChannelItem), 1);
                                   EXPECT_TRUE(dialog->Item(kIndexedSwatchItem)->IsDisabled());
                                   EXPECT_FALSE(g.zoomButtonIsIn)
                                       << "the sides of the tool buttons stay";
                                   return ReleaseKey(kKeyOption);
                               }
                               return std::nullopt;
                           }),
              "0");
    EXPECT_EQ(titles, (std::vector<std::string>{"Reset", "Reset", "Cancel"}));
}

TEST(IndexedDialog, IsSafeWhenAnyMemoryOrResourceIsMissing) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(9, 9, IndicesUpTo(6), 6, 1, kSeed);
    const std::vector<Act> acts = {Press(3), PressItem(kIndexedSwatchItem), CancelColor(),
                                   TakeChannel(1)};
    for (const FaultPoint point : {FaultPoint::allocate, FaultPoint::loadResource}) {
        std::set<std::string> codes;
        for (int n = 1; n < 3000 && (n == 1 || CallsSoFar(point) >= n - 1); ++n) {
            const long before = LiveMemoryBlocks();
            {
                IndexedSession session(picture);
                FailNthCall(point, n, memFullErr);
                codes.insert(session.Play(acts));
            }
            EXPECT_EQ(LiveMemoryBlocks(), before) << "call " << n;
        }
        ClearFaults();
        // The export itself may run out of memory, or the dialog may be missing; all else goes on.
        EXPECT_EQ(codes, point == FaultPoint::allocate ? (std::set<std::string>{"-1", "-108", "0"})
                                                       : (std::set<std::string>{"-1", "0"}));
    }
}

} // namespace
