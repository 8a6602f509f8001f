// The tools of the indexed dialog: presses and drags under every key, cursors, buttons, and which
// pixel the eyedropper takes.
#include "Cursors.h"
#include "IndexedSession.h"

#include "IndexedPreview.h"
#include "ModuleResources.h"
#include "PreviewTools.h"

#include <algorithm>
#include <map>
#include <optional>

namespace {

constexpr unsigned kSeed = 777;
const Act kHand = PressItem(kIndexedHandItem), kZoom = PressItem(kIndexedZoomItem),
          kDropper = PressItem(kIndexedDropperItem);
const Act kPause = Idle(60); // no later press is the second of a double click

const Cursor* ShownCursor() {
    return static_cast<ScriptSource*>(CurrentEventSource())->ShownCursor();
}

/// Scale, marks and tool in words.
std::string Describe(DialogPtr dialog) {
    const IndexedDialogGlobals& g = *GlobalsOf(dialog);
    const char* const tools[] = {"hand", "eyedropper", "zoom in", "zoom out", "plus", "minus"};
    std::string text = std::to_string(g.enlarge) + ":" + std::to_string(g.shrink);
    for (int i = 0; i < 256; ++i)
        if (g.transMap[i] != 0) text += " marks " + std::to_string(i);
    return text + ", " + tools[g.currentTool];
}

/// Chooses a scale of 1:1 or more.
Steps ZoomTo(int enlarge) {
    Steps steps = {kZoom};
    for (int i = 1; i < enlarge; ++i) steps.push_back(PressAt(InPreview(150, 200)));
    return steps + Steps{kPause};
}

TEST(IndexedTools, DoWhatTheHeldKeysSay) {
    const IndexedPicture picture = MakePicture(500, 600, {4}, 8, 1, kSeed);
    const struct {
        Steps choice;
        std::vector<short> keys;
        const char* want;
        short cursor;
    } cases[] = {
        {{kHand}, {}, "3:1, hand", 2001},
        {{kHand}, {kKeyCommand}, "4:1, zoom in", 2002},
        {{kZoom}, {kKeyOption, kKeyCommand}, "2:1, zoom out", 2003},
        {Holding({kKeyOption}, {kZoom}), {}, "2:1, zoom out", 2003},
        {{kDropper}, {}, "3:1 marks 4, plus", 2004},
        {{kDropper}, {kKeyCommand}, "3:1, minus", 2005},
        {Holding({kKeyOption}, {kDropper}), {kKeyShift}, "3:1 marks 4, plus", 2004},
        {{kDropper}, {kKeySpace}, "3:1, hand", 2001},
    };
    for (const auto& c : cases) {
        const Look look = [&](DialogPtr dialog) {
            EXPECT_EQ(Describe(dialog), c.want) << "case " << &c - cases;
            EXPECT_EQ(*ShownCursor(), **GetCursor(c.cursor)) << "case " << &c - cases;
        };
        const Steps click = {PressAt(InPreview(150, 200)), Idle(1), look};
        EXPECT_EQ(IndexedSession(picture).Play(ZoomTo(3) + c.choice + Steps{kPause} +
                                               Holding(c.keys, click)),
                  noErr);
    }
}

TEST(IndexedTools, ShowTheirCursorOverTheColourTableToo) {
    const IndexedPicture picture = MakePicture(50, 60, IndicesUpTo(4), 8, 1, kSeed);
    const struct {
        std::vector<short> keys;
        Steps choice;
        short cursor; ///< 0: the arrow
    } cases[] = {
        {{}, {}, 2004},
        {{kKeyCommand}, {}, 2005},
        {{}, {kHand}, 0},
        {{kKeyShift}, {kHand}, 2004},
        {{kKeyCommand}, {kHand}, 2005},
        {{kKeyShift}, {ChooseEntry(kIndexedChannelItem, 2)}, 0},
    };
    for (const auto& c : cases) {
        const Look look = [&](DialogPtr) {
            EXPECT_EQ(ShownCursor(), c.cursor != 0 ? *GetCursor(c.cursor) : nullptr)
                << "case " << &c - cases;
        };
        const Act past = MoveMouse(InPreview(150, 200)); // another cursor on the way
        EXPECT_EQ(
            IndexedSession(picture).Play(c.choice + Steps{past} +
                                         Holding(c.keys, {MoveMouse(Cell(3)), Idle(1), look})),
            noErr);
    }
}

/// Draws the pictures of hand, zoom and eyedropper into frames.
class ButtonsOf : public PixelSurface {
  public:
    ButtonsOf(DialogPtr dialog, const std::vector<short>& pictures) : PixelSurface(504, 652) {
        Surface* const shown = std::exchange(dialog->surface, this);
        GrafPtr port = nullptr;
        GetPort(&port);
        SetPort(dialog);
        PenNormal();
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            const Rect& rect = dialog->Item(static_cast<short>(kIndexedHandItem + i))->rect;
            DrawPicture(GetPicture(pictures[i]), &rect);
            FrameRect(&rect);
        }
        SetPort(port);
        dialog->surface = shown;
    }
};

TEST(IndexedTools, FollowPressesKeysAndDoubleClicksOnTheirButtons) {
    const IndexedPicture picture = MakePicture(500, 600, {4}, 8, 1, kSeed);
    const Steps zoomOut = Holding({kKeyOption}, {kZoom});
    const struct {
        const char* name;
        Steps steps;
        const char* want;
        std::vector<short> pictures; ///< of hand, zoom and eyedropper
    } cases[] = {
        {"zoom with command", Holding({kKeyCommand}, {kZoom}), "4:1, zoom in", {500, 511, 506}},
        {"zoom with option", zoomOut, "4:1, zoom out", {500, 513, 506}},
        {"both sides of zoom", zoomOut + Steps{kPause} + zoomOut, "4:1, zoom in", {500, 511, 506}},
        {"double click on zoom", {kZoom, kZoom}, "1:1, zoom in", {500, 511, 506}},
        {"with option", zoomOut + Steps{kZoom}, "1:1, zoom out", {500, 513, 506}},
        {"double click on the hand", {kHand, kHand}, "1:2, hand", {501, 510, 506}},
        {"slow clicks on the hand", {kHand, kPause, kHand}, "4:1, hand", {501, 510, 506}},
        {"the hand after zoom", {kZoom, kHand}, "4:1, hand", {501, 510, 506}},
        {"double click on the eyedropper", {kDropper, kDropper}, "4:1, plus", {500, 510, 507}},
        {"eyedropper with option",
         Holding({kKeyOption}, {kDropper}),
         "4:1, minus",
         {500, 510, 509}},
        {"the hand after minus",
         Holding({kKeyOption}, {kDropper}) + Steps{kHand},
         "4:1, hand",
         {501, 510, 508}},
        {"eyedropper while masked",
         Steps{ChooseEntry(kIndexedChannelItem, 2), kZoom} + Holding({kKeyOption}, {kDropper}),
         "4:1, zoom in",
         {500, 511, 514}},
    };
    for (const auto& c : cases) {
        IndexedSession session(picture);
        const Look look = [&](DialogPtr dialog) {
            EXPECT_EQ(Describe(dialog), c.want) << c.name;
            const ButtonsOf want(dialog, c.pictures);
            const Rect first = dialog->Item(kIndexedHandItem)->rect;
            const Rect last = dialog->Item(kIndexedDropperItem)->rect;
            int wrong = 0;
            for (int v = first.top; v < first.bottom; ++v)
                for (int h = first.left; h < last.right; ++h)
                    if (want.At(v, h) != PixelSurface::kBackground)
                        wrong += session.surface.At(v, h) != want.At(v, h);
            EXPECT_EQ(wrong, 0) << c.name;
        };
        EXPECT_EQ(
            session.Play(ZoomTo(4) + Steps{kDropper, kPause} + c.steps + Steps{Idle(1), look}),
            noErr);
    }
}

/// Lets go of the option key together with the button.
class HurriedUser : public ScriptedUser {
  public:
    using ScriptedUser::ScriptedUser;
    void ReadKeys(KeyMap keys) override {
        std::fill(keys, keys + 16, std::uint8_t{0});
        if (ButtonDown()) keys[kKeyOption >> 3] = 1 << (kKeyOption & 7);
    }
};

TEST(IndexedTools, LookAtTheOptionKeyBeforeTheRelease) {
    const Look look = [](DialogPtr dialog) {
        EXPECT_EQ(GlobalsOf(dialog)->selectedTool, zoomOutTool);
    };
    IndexedSession session(MakePicture(9, 9, {4}, 8, 0, kSeed));
    EXPECT_EQ(session.Play<HurriedUser>({kZoom, look}), noErr);
}

// Deliberate: the memory of the last press belongs to the module, not to a dialog.
TEST(IndexedTools, CountADoubleClickAcrossTwoDialogs) {
    const Look enlarge = [](DialogPtr dialog) { GlobalsOf(dialog)->enlarge = 4; };
    const Look look = [](DialogPtr dialog) { EXPECT_EQ(Describe(dialog), "1:1, zoom in"); };
    IndexedSession session(MakePicture(500, 600, {4}, 8, 0, kSeed));
    const Act cancel = PressKey(kKeyEscape);
    ScriptedUser user({kPause, kZoom, cancel, enlarge, kZoom, look, cancel});
    for (int dialog = 0; dialog < 2; ++dialog)
        EXPECT_EQ(user.Export(&session.record), userCanceledErr);
}

// Deliberate: the click is measured from the corner of the box also where the picture lies in the
// middle of it.
TEST(IndexedTools, ZoomAboutAPointMeasuredFromTheCornerOfTheBox) {
    const auto expectSource = [](const Rect& want) -> Look {
        return [=](DialogPtr dialog) { EXPECT_EQ(GlobalsOf(dialog)->srcRect, want); };
    };
    // 402 / 2 columns and 302 / 2 rows about (150, 200); then 403 / 3 and 303 / 3 about
    // (74 + 150 / 2, 99 + 200 / 2).
    const Act click = PressAt(InPreview(150, 200));
    IndexedSession session(MakePicture(290, 300, {1}, 4, 0, kSeed));
    EXPECT_EQ(session.Play({kZoom, click, expectSource({74, 99, 225, 300}), click,
                            expectSource({98, 132, 199, 266})}),
              noErr);
}

TEST(IndexedTools, OpenLargePicturesInTheMiddleOfWhatTheSmallestScaleShows) {
    const struct {
        int rows, columns;
        std::int32_t maxShrink;
        Rect source;
    } cases[] = {
        {302, 402, 1, {0, 0, 301, 401}},
        {303, 403, 2, {0, 0, 301, 401}},
        {20, 7000, 16, {0, 3015, 20, 3416}},
        {5000, 20, 16, {2265, 0, 2566, 20}},
    };
    for (const auto& c : cases) {
        const Look look = [&](DialogPtr dialog) {
            EXPECT_EQ(GlobalsOf(dialog)->maxShrink, c.maxShrink) << c.columns;
            EXPECT_EQ(GlobalsOf(dialog)->srcRect, c.source) << c.columns;
        };
        IndexedSession session(MakePicture(c.rows, c.columns, {1}, 4, 0, kSeed));
        EXPECT_EQ(session.Play({look}), noErr);
    }
}

TEST(IndexedTools, TakeThePixelThatIsSeenUnderTheEyedropper) {
    const Point middle = InPreview(151, 201);
    const Steps dropper = {kDropper, kPause};
    const Steps drag = {kHand, Drag({InPreview(150, 200), InPreview(200, 90)}), kPause};
    const Steps zoomOut = Holding({kKeyOption}, {kZoom, PressAt(InPreview(150, 200))});
    const struct {
        const char* scale;
        int rows, columns;
        Steps steps;
        int height, width; ///< of what is pressed at in the middle of the box
    } cases[] = {
        {"1:1", 15, 16, {}, 20, 20},
        {"1:1", 500, 600, {}, 300, 400},
        {"3:1", 16, 18, ZoomTo(3), 52, 58},
        {"3:1", 500, 600, ZoomTo(3) + drag, 300, 400},
        {"16:1", 60, 70, ZoomTo(16), 300, 400},
        {"1:2", 900, 1001, zoomOut, 300, 400},
        {"1:2", 3, 805, zoomOut, 6, 400},
    };
    std::mt19937 random(kSeed);
    const auto below = [&](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    for (const auto& c : cases) {
        const IndexedPicture picture =
            MakePicture(c.rows, c.columns, IndicesUpTo(240), 240, 0, kSeed);
        std::map<PackedColor, int> indexOf;
        for (int i = 0; i < 240; ++i) indexOf[picture.ColorOf(i)] = i;
        IndexedSession session(picture);
        std::optional<PixelSurface> seen; // before anything is marked
        Steps steps = c.steps + dropper + Steps{Look([&](DialogPtr dialog) {
                          EXPECT_EQ(Describe(dialog), c.scale + std::string(", plus"));
                          seen = session.surface;
                      })};
        for (int i = 0; i < 100; ++i) {
            const int v = middle.v - c.height / 2 + below(c.height);
            const int h = middle.h - c.width / 2 + below(c.width);
            const Point point = {static_cast<std::int16_t>(v), static_cast<std::int16_t>(h)};
            steps.push_back(PressAt(point));
            steps.push_back([&, point](DialogPtr dialog) {
                IndexedDialogGlobals* const g = GlobalsOf(dialog);
                std::vector<int> marked, want;
                for (int index = 0; index < 256; ++index)
                    if (std::exchange(g->transMap[index], 0) != 0) marked.push_back(index);
                if (PtInRect(point, &g->dstRect))
                    want.push_back(indexOf.at(seen->At(point.v, point.h)));
                EXPECT_EQ(marked, want)
                    << c.scale << " at " << point.v << ", " << point.h << ", seed " << kSeed;
            });
        }
        EXPECT_EQ(session.Play(steps), noErr);
    }
}

} // namespace
