// Zooming, tool buttons and items of a real dialog that a script operates.
#include "PreviewTools.h"

#include "HostDialogs.h"
#include "LocalDialogUtilities.h"
#include "PixelSurface.h"
#include "ResourceManager.h"
#include "ScriptSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace {

constexpr short kDialog = 7000;

IndexedDialogGlobals& GlobalsOf(DialogPtr dialog) {
    return *reinterpret_cast<IndexedDialogGlobals*>(GetMoveableWRefCon(dialog));
}

/// Presses on tool buttons choose tools, as in the options dialogs.
Boolean TrackTools(DialogPtr dialog, EventRecord* event, short* item) {
    short hit = 0;
    if (event->what != mouseDown || !DialogItemPoint(&event->where, dialog, &hit, nullptr, nullptr))
        return false;
    if (hit < kIndexedHandItem || hit > kIndexedDropperItem) return false;
    *item = hit;
    TrackToolItemHit(dialog, event, hit, &GlobalsOf(dialog));
    EXPECT_FALSE(CurrentEventSource()->ButtonDown()) << "left before the release";
    return false;
}

class TestDialog : public testing::Test {
  protected:
    TestDialog() {
        file = OpenResFile(TEST_RESOURCES);
        EXPECT_GT(file, 0) << TEST_RESOURCES;
        g.imageSize = {400, 400};
        g.maxShrink = 4;
        g.srcRect = {150, 150, 250, 250};
    }
    ~TestDialog() override {
        SetEventSource(nullptr);
        CloseResFile(file);
    }

    DialogPtr Open() {
        const DialogPtr dialog = GetNewDialog(kDialog, nullptr, nullptr);
        SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(&g));
        SetDialogDefaultItem(dialog, 1);
        SetDialogCancelItem(dialog, 2);
        return dialog;
    }

    /// Plays acts in so many dialogs, one after the other until OK is hit; returns why the script
    /// failed.
    template <typename Script = ScriptSource>
    std::string Play(std::vector<Act> acts, int dialogs = 1) {
        acts.push_back(PressItem(1));
        Script script(std::move(acts));
        SetEventSource(&script);
        for (; dialogs > 0; --dialogs) {
            const DialogPtr dialog = Open();
            ShowWindow(dialog);
            short item = 0;
            while (item != 1 && item != 2) MoveableModalDialog(dialog, nullptr, TrackTools, &item);
            DisposeDialog(dialog);
        }
        SetEventSource(nullptr);
        return script.Failure();
    }

    std::int16_t file;
    IndexedDialogGlobals g;
};

using Items = std::vector<short>;

Items TakeInvalidItems(DialogPtr dialog) {
    Items items;
    for (short item = 1; dialog->Item(item) != nullptr; ++item)
        if (std::exchange(dialog->Item(item)->invalid, false)) items.push_back(item);
    return items;
}

TEST_F(TestDialog, HasItemsThatTheUtilitiesReach) {
    const DialogPtr dialog = Open();
    for (const short item : Items{1, 5, 6, 7, 9}) {
        EnableDisableDialogItem(dialog, item, false);
        EXPECT_TRUE(dialog->Item(item)->IsDisabled()) << item;
        EnableDisableDialogItem(dialog, item, true);
        EXPECT_FALSE(dialog->Item(item)->IsDisabled()) << item;
        EXPECT_EQ(GetPopupItemMenuHandle(dialog, item) != nullptr, item == 6) << item;
    }
    const std::uint8_t red[] = {3, 'R', 'e', 'd'};
    InsertMenuItem(GetPopupItemMenuHandle(dialog, 6), red, 2);
    DisablePopupMenuItem(dialog, 6, 2);
    EXPECT_FALSE((*dialog->Item(6)->menu)->entries.at(1).enabled);
    MySetPopUpMenuValue(dialog, 6, 3);
    EXPECT_EQ(GetPopUpMenuValue(dialog, 6), 3);
    DisposeDialog(dialog);
}

TEST_F(TestDialog, PadsTheScaleOfSingleDigits) {
    const DialogPtr dialog = Open();
    const struct {
        std::int32_t enlarge, shrink;
        const char* want;
    } cases[] = {{2, 1, " 2|1||"}, {12, 1, "12|1||"}, {1, 12, "1|12||"},
                 {9, 9, " 9|9||"}, {10, 1, "10|1||"}, {1, 10, "1|10||"}};
    for (const auto& c : cases) {
        TakeInvalidItems(dialog);
        SetZoomFactor(dialog, c.enlarge, c.shrink, 4);
        EXPECT_EQ(SubstituteParamText("^0|^1|^2|^3"), c.want);
        EXPECT_EQ(TakeInvalidItems(dialog), Items{4}) << c.want;
    }
    DisposeDialog(dialog);
}

TEST_F(TestDialog, DrawsAZoomAnewOnlyWhenItChanges) {
    const DialogPtr dialog = Open();
    const Rect box = {10, 10, 112, 112};
    const Point centre = {200, 240};
    const Rect before = {150, 150, 250, 250};
    const struct {
        const char* name;
        ZoomFactors from;
        short mode; ///< kNoZoomMode: a step
        zoomDirection direction;
        bool doubleStep;
        const char* scale; ///< null: nothing happens
        Rect source;
    } cases[] = {
        {"in about a point", {3, 1, 4}, kNoZoomMode, zoomIn, false, " 4:1", {187, 227, 213, 253}},
        {"out twice", {1, 1, 3}, kNoZoomMode, zoomOut, true, " 1:2", {99, 139, 301, 341}},
        {"in at the end", {16, 1, 4}, kNoZoomMode, zoomIn, false, nullptr, before},
        {"out at the end", {1, 4, 4}, kNoZoomMode, zoomOut, false, nullptr, before},
        {"to fit", {2, 1, 4}, kZoomToFit, zoomIn, false, " 1:4", {0, 0, 400, 400}},
        {"to fit again", {1, 4, 4}, kZoomToFit, zoomIn, false, nullptr, before},
        {"to 1:1 about its own centre",
         {4, 1, 4},
         kZoomToActualPixels,
         zoomIn,
         false,
         " 1:1",
         {149, 149, 250, 250}},
    };
    for (const auto& c : cases) {
        g.enlarge = c.from.enlarge, g.shrink = c.from.shrink, g.maxShrink = c.from.maxShrink;
        g.srcRect = before;
        TakeInvalidItems(dialog);
        if (c.mode == kNoZoomMode)
            DoZoom(dialog, c.direction, &g, &box, c.doubleStep, &centre);
        else
            ZoomOneToOne(dialog, &g, c.mode);
        const bool changes = c.scale != nullptr;
        EXPECT_EQ(TakeInvalidItems(dialog), (changes ? Items{3, 4} : Items{})) << c.name;
        EXPECT_EQ(g.srcRect, c.source) << c.name;
        if (changes) {
            EXPECT_EQ(SubstituteParamText("^0:^1"), c.scale) << c.name;
        }
    }
    DisposeDialog(dialog);
}

TEST_F(TestDialog, RedrawsTheTwoButtonsConcerned) {
    const DialogPtr dialog = Open();
    g.selectedTool = eyeDropperMinusTool;
    TakeInvalidItems(dialog);
    SetCurrentToolItem(dialog, &g, zoomOutTool);
    EXPECT_EQ(g.selectedTool, zoomOutTool);
    EXPECT_EQ(TakeInvalidItems(dialog), (Items{10, 11}));
    DisposeDialog(dialog);
}

constexpr int kRows = 180, kColumns = 260;

std::vector<std::uint32_t> Pixels(const PixelSurface& surface) {
    std::vector<std::uint32_t> pixels;
    for (int v = 0; v < kRows; ++v)
        for (int h = 0; h < kColumns; ++h) pixels.push_back(surface.At(v, h));
    return pixels;
}

TEST_F(TestDialog, ShowsEachButtonsPictureInAFrame) {
    const DialogPtr dialog = Open();
    std::uint8_t mask = 0;
    const struct {
        short item;
        ToolType selected;
        bool in, plus, masked;
        short picture;
    } cases[] = {
        {9, zoomInTool, true, true, false, 500},
        {9, handTool, true, true, false, 501},
        {10, handTool, true, false, true, 510},
        {10, zoomInTool, true, true, false, 511},
        {10, zoomOutTool, false, true, false, 513},
        {11, eyeDropperPlusTool, false, true, false, 507},
        {11, eyeDropperTool, true, false, false, 509},
        {11, handTool, true, false, true, 514},
        {12, handTool, true, true, false, 0}, // the frame around them
    };
    const auto draw = [&](auto act) {
        PixelSurface surface(kRows, kColumns);
        dialog->surface = &surface;
        SetPort(dialog);
        act();
        dialog->surface = nullptr;
        return Pixels(surface);
    };
    for (const auto& c : cases) {
        g.selectedTool = c.selected;
        g.zoomButtonIsIn = c.in, g.dropperButtonIsPlus = c.plus;
        g.maskedData = c.masked ? &mask : nullptr;
        const Rect rect = dialog->Item(c.item)->rect;
        const auto want = draw([&] {
            PenNormal();
            if (c.picture != 0) DrawPicture(GetPicture(c.picture), &rect);
            FrameRect(&rect);
        });
        PenPat(&kGrayPattern);
        MoveTo(5, 6);
        const auto got = draw([&] {
            if (c.picture != 0)
                DrawIndexedToolItem(dialog, c.item);
            else
                DrawToolBoxFrame(dialog, c.item);
        });
        EXPECT_TRUE(got == want) << "item " << c.item << " is not picture " << c.picture;
        PenState pen;
        GetPenState(&pen);
        EXPECT_EQ(pen.pnPat, kGrayPattern) << "item " << c.item;
        EXPECT_EQ(pen.pnLoc, (Point{6, 5})) << "item " << c.item;
    }
    SetPort(nullptr);
    DisposeDialog(dialog);
}

/// A keyboard whose map is written out byte by byte.
class FixedKeys : public ScriptSource {
  public:
    FixedKeys() : ScriptSource(std::vector<Act>{}) {}
    void ReadKeys(KeyMap keys) override { std::copy(map, map + 16, keys); }
    KeyMap map = {};
};

TEST(Keys, AreBitsFromTheLeastSignificantOfEachByte) {
    FixedKeys keyboard;
    SetEventSource(&keyboard);
    const struct {
        short code;
        int byte;
        std::uint8_t bit;
    } cases[] = {{49, 6, 0x02}, {55, 6, 0x80}, {56, 7, 0x01}, {58, 7, 0x04}};
    for (const auto& c : cases) {
        std::fill(keyboard.map, keyboard.map + 16, std::uint8_t{0});
        keyboard.map[c.byte] = c.bit;
        EXPECT_EQ(IsThisKeyDown(c.code), 1) << c.code;
        keyboard.map[c.byte] = static_cast<std::uint8_t>(~c.bit);
        EXPECT_EQ(IsThisKeyDown(c.code), 0) << c.code;
    }
    SetEventSource(nullptr);
}

std::string Describe(const IndexedDialogGlobals& g) {
    const char* const tools[] = {"hand", "eyedropper", "zoom in", "zoom out", "plus", "minus"};
    return std::string(tools[g.selectedTool]) + "; " + (g.zoomButtonIsIn ? "in" : "out") +
           (g.dropperButtonIsPlus ? " plus; " : " minus; ") + std::to_string(g.enlarge) + ":" +
           std::to_string(g.shrink) + (g.previewDirty ? " stale" : "");
}

TEST_F(TestDialog, FollowsPressesKeysAndDoubleClicks) {
    const Act option = HoldKey(kKeyOption), noOption = ReleaseKey(kKeyOption);
    const Act command = HoldKey(kKeyCommand), pause = Idle(60);
    const Act hand = PressItem(9), zoom = PressItem(10), dropper = PressItem(11);
    const struct {
        const char* name;
        std::vector<Act> acts;
        const char* want; ///< tool, sides of the buttons, scale
        bool masked = false;
    } cases[] = {
        {"zoom", {zoom}, "zoom in; in plus; 4:1"},
        {"zoom with command", {command, zoom}, "zoom in; in plus; 4:1"},
        {"zoom with option", {option, zoom}, "zoom out; out plus; 4:1"},
        {"both sides of zoom", {option, zoom, pause, zoom}, "zoom in; in plus; 4:1"},
        {"double click on zoom", {zoom, zoom}, "zoom in; in plus; 1:1 stale"},
        {"with option", {option, zoom, noOption, zoom}, "zoom out; out plus; 1:1 stale"},
        {"double click on the hand", {hand, hand}, "hand; in plus; 1:4 stale"},
        {"slow clicks on the hand", {hand, pause, hand}, "hand; in plus; 4:1"},
        {"the hand after zoom", {zoom, hand}, "hand; in plus; 4:1"},
        {"eyedropper with option", {option, dropper}, "minus; in minus; 4:1"},
        {"double click on the eyedropper", {hand, dropper, dropper}, "plus; in plus; 4:1"},
        {"eyedropper while masked", {hand, option, dropper}, "hand; in plus; 4:1", true},
    };
    std::uint8_t mask = 0;
    for (const auto& c : cases) {
        g.enlarge = 4, g.shrink = 1, g.previewDirty = 0;
        g.selectedTool = g.currentTool = eyeDropperTool;
        g.zoomButtonIsIn = g.dropperButtonIsPlus = 1;
        g.maskedData = c.masked ? &mask : nullptr;
        EXPECT_EQ(Play(c.acts), "") << c.name;
        EXPECT_EQ(Describe(g), c.want) << c.name;
        EXPECT_EQ(g.currentTool, g.selectedTool) << c.name;
    }
}

/// Lets go of the option key together with the button.
class HurriedUser : public ScriptSource {
  public:
    using ScriptSource::ScriptSource;
    void ReadKeys(KeyMap keys) override {
        std::fill(keys, keys + 16, std::uint8_t{0});
        if (ButtonDown()) keys[kKeyOption >> 3] = 1 << (kKeyOption & 7);
    }
};

TEST_F(TestDialog, LooksAtTheOptionKeyBeforeTheRelease) {
    EXPECT_EQ(Play<HurriedUser>({PressItem(10)}), "");
    EXPECT_EQ(g.selectedTool, zoomOutTool);
}

// Deliberate: the memory of the last press belongs to the module, not to a dialog.
TEST_F(TestDialog, CountsADoubleClickAcrossTwoDialogs) {
    g.enlarge = 4;
    EXPECT_EQ(Play({PressItem(10), PressItem(1), PressItem(10)}, 2), "");
    EXPECT_EQ(g.enlarge, 1);
}

} // namespace
