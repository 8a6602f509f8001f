// Dialogs, controls and menus as data, out of whole and damaged resources, and the calls on items.
#include "ControlManager.h"
#include "DialogResources.h"
#include "DrawDialogs.h"
#include "HostDialogs.h"
#include "MemoryManager.h"
#include "MenuManager.h"
#include "Notices.h"
#include "PascalStrings.h"
#include "PlainSource.h"
#include "RecordingSurface.h"
#include "ResourceManager.h"
#include "SourceCalls.h"
#include "TestDialog.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

struct PascalText {
    Str255 text = {};
    PascalText(const std::string& source) { ToPascal(source, text); }
    operator ConstStr255Param() const { return text; }
};

class Dialogs : public testing::Test {
  protected:
    Dialogs() : before(LiveMemoryBlocks()) { SetEventSource(&source); }
    ~Dialogs() override {
        DisposeDialog(dialog);
        SetEventSource(nullptr);
        EXPECT_EQ(LiveMemoryBlocks(), before) << "blocks were left over";
        EXPECT_TRUE(OpenDialogs().empty());
    }
    void Open() {
        dialog = GetNewDialog(kTestDialog, nullptr, nullptr);
        ASSERT_NE(dialog, nullptr);
        source.changes.clear();
    }
    struct ItemParts {
        short kind;
        Handle handle;
        Rect rect;
    };
    ItemParts Get(short item) {
        ItemParts parts;
        GetDialogItem(dialog, item, &parts.kind, &parts.handle, &parts.rect);
        return parts;
    }
    void WriteKind(short item, int kind) {
        const ItemParts parts = Get(item);
        SetDialogItem(dialog, item, static_cast<short>(kind), parts.handle, &parts.rect);
    }
    ControlHandle ControlOf(short item) {
        return reinterpret_cast<ControlHandle>(Get(item).handle);
    }
    /// The menu as a module reaches it.
    MenuHandle MenuOf(short item) {
        return *reinterpret_cast<MenuHandle*>(*(*ControlOf(item))->contrlData);
    }
    Lines EntriesOf(short item) {
        Lines entries;
        for (short entry = 1; entry <= CountMenuItems(MenuOf(item)); ++entry) {
            Str255 text;
            GetMenuItemText(MenuOf(item), entry, text);
            entries.push_back(FromPascal(text) + ((*MenuOf(item))->CanChoose(entry) ? "" : " off"));
        }
        return entries;
    }

    TestDialogResources resources;
    long before;
    PlainSource source;
    DialogPtr dialog = nullptr;
};

TEST_F(Dialogs, HoldWhatTheirResourcesSay) {
    const Handle resource = GetResource(FourCC("DLOG"), kTestDialog);
    CenterDialog(resource);
    CenterDialog(nullptr);
    Open();
    EXPECT_EQ(dialog->origin, (Point{(768 - 320) / 2, (1024 - 380) / 2}));
    EXPECT_EQ(dialog->portRect, (Rect{0, 0, 320, 380}));
    const std::vector<short> want = {4, 4, 5, 7, 16, 8, 0, 0, 0, 0, 8, 5, 0, 133};
    for (short item = 1; item <= 14; ++item)
        EXPECT_EQ(Get(item).kind, want[static_cast<std::size_t>(item) - 1]) << "item " << item;
    EXPECT_EQ(dialog->Item(kTestCells)->rect, (Rect{180, 20, 217, 309}));
    EXPECT_EQ(dialog->Item(kTestScale)->text, "^0:^1");
    EXPECT_EQ(dialog->editItem, kTestNumber);
    EXPECT_EQ(EntriesOf(kTestColours), (Lines{"Two", "Four", "- off", "Eight off", "Sixteen"}));
    EXPECT_EQ(GetControlMinimum(ControlOf(kTestColours)), 0);
    EXPECT_EQ(GetControlMaximum(ControlOf(kTestColours)), 5);
    EXPECT_EQ(GetPopUpMenuValue(dialog, kTestColours), 1);
    EXPECT_EQ(ControlOf(0), nullptr);
    EXPECT_EQ(GetNewDialog(1, nullptr, nullptr), nullptr);
}

constexpr struct {
    const char* name;
    OSType type;
    short id;
    Size filler; ///< bytes at the end that may be missing
} kParts[] = {{"DLOG", FourCC("DLOG"), kTestDialog, 0},
              {"DITL", FourCC("DITL"), kTestDialog, 1},
              {"CNTL", FourCC("CNTL"), 9001, 0},
              {"MENU", FourCC("MENU"), 9001, 0}};

TEST_F(Dialogs, AreNotMadeOfResourcesThatEndTooSoon) {
    for (const auto& part : kParts) {
        const Handle handle = GetResource(part.type, part.id);
        const std::string whole(*handle, *handle + GetHandleSize(handle));
        const auto length = static_cast<Size>(whole.size());
        for (Size size = length - 1; size >= 0; --size) {
            ASSERT_EQ(SetHandleSize(handle, size), noErr);
            const DialogPtr made = GetNewDialog(kTestDialog, nullptr, nullptr);
            EXPECT_EQ(made != nullptr, size >= length - part.filler)
                << part.name << " of " << size << " bytes";
            DisposeDialog(made);
        }
        ASSERT_EQ(SetHandleSize(handle, length), noErr);
        std::copy(whole.begin(), whole.end(), *handle);
    }
    Open();
}

TEST_F(Dialogs, ShowOneStateOfAnItemThroughKindHighlightAndSource) {
    Open();
    const auto disable = [&](short item) { DisableControl(dialog, item); };
    const auto enable = [&](short item) { EnableControl(dialog, item); };
    const auto writeDisabled = [&](short item) { WriteKind(item, Get(item).kind | kItemDisabled); };
    const auto writeEnabled = [&](short item) { WriteKind(item, Get(item).kind & ~kItemDisabled); };
    const auto dim = [&](short item) { HiliteControl(ControlOf(item), 255); };
    const auto undim = [&](short item) { HiliteControl(ControlOf(item), 0); };
    const struct {
        short item;
        std::function<void(short)> act;
        short kind;
        bool changes;
    } steps[] = {
        {kTestOK, enable, 4, false},
        {kTestOK, disable, 132, true},
        {kTestOK, disable, 132, false},
        {kTestOK, writeDisabled, 132, false},
        {kTestOK, enable, 4, true},
        {kTestOK, writeDisabled, 132, true},
        {kTestOK, undim, 4, true},
        {kTestAutomatic, dim, 133, true},
        {kTestAutomatic, writeEnabled, 5, true},
        {kTestNumber, writeDisabled, 144, true},
        {kTestNumber, writeDisabled, 144, false},
        {kTestCanvas, writeDisabled, 128, true},
        {kTestCanvas, enable, 128, false},
        {99, writeDisabled, 0, false},
    };
    for (const auto& step : steps) {
        source.changes.clear();
        step.act(step.item);
        const std::string name = "step " + std::to_string(&step - steps);
        EXPECT_EQ(Get(step.item).kind, step.kind) << name;
        const Lines want = step.changes ? Lines{std::to_string(step.item) + " state"} : Lines{};
        EXPECT_EQ(source.changes, want) << name;
        if (step.item == kTestOK || step.item == kTestAutomatic) {
            EXPECT_EQ((*ControlOf(step.item))->contrlHilite == 255, step.kind >= 128) << name;
        }
    }
}

TEST_F(Dialogs, KeepControlValuesInRangeAndTellEachChangeOnce) {
    Open();
    const ControlHandle popUp = ControlOf(kTestColours);
    SetControlValue(popUp, 9);
    EXPECT_EQ(GetControlValue(popUp), 5);
    SetControlMaximum(popUp, 9);
    SetControlValue(popUp, 9);
    SetControlValue(popUp, 9);
    EXPECT_EQ(GetControlValue(popUp), 9);
    SetControlMaximum(popUp, 4);
    EXPECT_EQ(GetControlValue(popUp), 4);
    SetControlValue(popUp, -3);
    EXPECT_EQ(GetControlValue(popUp), 0) << "no entry";
    SetCheckBoxState(dialog, kTestAutomatic, 200);
    EXPECT_EQ(GetControlValue(ControlOf(kTestAutomatic)), 1);
    SetControlTitle(ControlOf(kTestCancel), PascalText("Reset"));
    SetControlTitle(ControlOf(kTestCancel), PascalText("Reset"));
    EXPECT_EQ(dialog->Item(kTestCancel)->text, "Reset");
    EXPECT_EQ(source.changes,
              (Lines{"4 value", "4 value", "4 value", "4 value", "4 value", "3 value", "2 title"}));
    SetControlValue(nullptr, 1);
    HiliteControl(nullptr, 1);
    EXPECT_EQ(GetControlValue(nullptr), 0);
}

TEST_F(Dialogs, LetMenusGrowAndChange) {
    Open();
    const MenuHandle menu = MenuOf(kTestColours);
    InsertMenuItem(menu, PascalText("(-"), 0);
    InsertMenuItem(menu, PascalText("First/F;<B"), 0);
    InsertMenuItem(menu, PascalText("Last"), 1000);
    InsertMenuItem(menu, PascalText("Six"), 6);
    SetMenuItemText(menu, 3, PascalText("Deux"));
    DisableItem(menu, 4);
    EnableItem(menu, 6);
    const Lines want = {"First/F;<B", "- off", "Deux",    "Four off", "- off",
                        "Eight",      "Six",   "Sixteen", "Last"};
    EXPECT_EQ(EntriesOf(kTestColours), want);
    // None of these changes anything.
    SetMenuItemText(menu, 10, PascalText("?"));
    EnableItem(menu, 6);
    EnableItem(menu, 10);
    EnableItem(menu, -1);
    EnableItem(nullptr, 0);
    DisableItem(nullptr, 1);
    EXPECT_EQ(EntriesOf(kTestColours), want);
    EXPECT_EQ(CountMenuItems(nullptr), 0);
    EXPECT_EQ(source.changes, Lines(7, "4 menu"));

    constexpr short kDisabled = 4, kLine = 2, kMissing = 10;
    for (const short entry : {kDisabled, kLine, kMissing})
        EXPECT_FALSE(ChoosePopUpEntry(dialog, kTestColours, entry)) << entry;
    EXPECT_FALSE(ChoosePopUpEntry(dialog, kTestOK, 1)) << "no pop-up";
    EXPECT_TRUE(ChoosePopUpEntry(dialog, kTestColours, 9));
    EXPECT_EQ(GetPopUpMenuValue(dialog, kTestColours), 9) << "past the control's old maximum";
    DisableItem(menu, 0);
    EXPECT_FALSE(ChoosePopUpEntry(dialog, kTestColours, 1)) << "the whole menu is disabled";
    EnableItem(menu, 0);
    EXPECT_EQ(EntriesOf(kTestColours), want) << "entries keep their own state";
    WriteKind(kTestColours, kResourceControlItem | kItemDisabled);
    EXPECT_FALSE(ChoosePopUpEntry(dialog, kTestColours, 1));
}

TEST_F(Dialogs, KeepMenuEntriesBehindTheSwitchesEnabled) {
    const Handle resource = GetResource(FourCC("MENU"), 9001);
    std::string bytes(*resource, *resource + 10);
    bytes += std::string("\0\0\0\x05", 4) + '\0'; // of the entries only the second, no title
    for (int i = 0; i < 40; ++i) bytes += std::string("\1x\0\0\0\0", 6);
    bytes += '\0';
    ASSERT_EQ(SetHandleSize(resource, static_cast<Size>(bytes.size())), noErr);
    std::copy(bytes.begin(), bytes.end(), *resource);
    Open();
    Lines want(40, "x");
    for (std::size_t i = 0; i < 31; ++i)
        if (i != 1) want[i] = "x off";
    EXPECT_EQ(EntriesOf(kTestColours), want);
}

TEST_F(Dialogs, FindTheFirstItemAtAPoint) {
    Open();
    SetOutlineGroup(dialog, kTestGroup);
    // The canvas now covers the tools behind it in order, but not the check boxes before it.
    const ItemParts canvas = Get(kTestCanvas);
    const Rect wide = {0, 0, 250, 380};
    SetDialogItem(dialog, kTestCanvas, canvas.kind, canvas.handle, &wide);
    EXPECT_EQ(source.changes, Lines{"7 rect"});
    const std::pair<Point, short> cases[] = {
        {{25, 225}, kTestAutomatic}, {{130, 215}, kTestCanvas}, {{289, 285}, kTestOK},
        {{303, 359}, kTestOK},       {{304, 359}, 0},           {{303, 360}, 0}};
    for (const auto& [point, item] : cases)
        EXPECT_EQ(FindDialogItem(dialog, point) + 1, item) << point.v << ' ' << point.h;
    SetDialogItem(dialog, kTestCanvas, canvas.kind, canvas.handle, &canvas.rect);
    EXPECT_EQ(FindDialogItem(dialog, {130, 215}), -1) << "inside the outline, beside its items";
    WriteKind(kTestAutomatic, kCheckBoxItem | kItemDisabled);
    EXPECT_EQ(FindDialogItem(dialog, {25, 225}) + 1, kTestAutomatic) << "disabled";
}

void DrawWildly(DialogPtr drawn, short item) {
    const Rect rect = drawn->Item(item)->rect;
    PenPat(&kGrayPattern);
    MoveTo(1, 2);
    TextSize(20);
    PaintRect(&rect);
}

TEST_F(Dialogs, DrawWhatIsInvalidOnceAndLeavePortAndPenAlone) {
    RecordingSurface surface;
    source.surface = &surface;
    Open();
    SetOutlineGroup(dialog, kTestGroup);
    Rect rect = dialog->Item(kTestCells)->rect;
    SetDialogItem(dialog, kTestCells, 0, ProcToHandle(DrawWildly), &rect);
    GrafPort other;
    SetPort(&other);
    DrawInvalidItems();
    EXPECT_TRUE(surface.calls.empty()) << "the dialog is not yet shown";
    ShowWindow(dialog);
    DrawInvalidItems();
    const std::size_t all = surface.calls.size();
    EXPECT_GT(all, 1U) << "cells and the outline";
    EXPECT_EQ(source.changes, (Lines{"6 look", "11 look"}));
    DrawInvalidItems();
    EXPECT_EQ(surface.calls.size(), all) << "nothing is invalid any more";
    InvalItem(dialog, kTestCells);
    InvalItem(dialog, kTestScale);
    InvalItem(dialog, 99);
    DrawInvalidItems();
    EXPECT_EQ(surface.calls.size(), all + 1);
    EXPECT_EQ(source.changes.back(), "6 look");
    GrafPtr port;
    GetPort(&port);
    EXPECT_EQ(port, &other);
    EXPECT_EQ(dialog->pen.pnPat, kBlackPattern);
    EXPECT_EQ(dialog->pen.pnLoc, Point());
    EXPECT_EQ(dialog->txSize, 0);
    SetPort(dialog);
    DisposeDialog(dialog);
    dialog = nullptr;
    GetPort(&port);
    EXPECT_EQ(port, nullptr) << "a port that is gone";
}

TEST_F(Dialogs, ReadWholeNumbersInRangeAndNothingElse) {
    Open();
    const std::pair<const char*, int> good[] = {
        {"2", 2}, {"256", 256}, {" +7\t", 7}, {"007", 7}, {"00000000000000000000256", 256}};
    for (const auto& [text, want] : good) {
        std::int32_t number = -1;
        StuffText(dialog, kTestNumber, PascalText(text));
        EXPECT_TRUE(FetchNumber(dialog, kTestNumber, 2, 256, &number)) << text;
        EXPECT_EQ(number, want) << text;
    }
    EXPECT_TRUE(source.alerts.empty());
    for (const char* text : {"", " ", "1", "257", "-2", "+", "2.0", "2 3", "0x10", "- 5",
                             "4294967298", "18446744073709551618"}) {
        std::int32_t number = -1;
        StuffText(dialog, kTestNumber, PascalText(text));
        source.changes.clear();
        source.alerts.clear();
        EXPECT_FALSE(FetchNumber(dialog, kTestNumber, 2, 256, &number)) << text;
        EXPECT_EQ(number, -1) << text;
        EXPECT_EQ(source.alerts, Lines{"Please enter a whole number from 2 to 256."}) << text;
        EXPECT_EQ(source.changes, Lines{"5 focus"}) << text;
    }
    StuffNumber(dialog, kTestNumber, -2147483647 - 1);
    std::int32_t least = 0;
    EXPECT_TRUE(FetchNumber(dialog, kTestNumber, -2147483647 - 1, 0, &least));
    EXPECT_EQ(least, -2147483647 - 1);
}

TEST_F(Dialogs, CutTextsWithoutSplittingACharacter) {
    Open();
    std::string long_(254, 'a');
    EditTextChanged(dialog, kTestNumber, long_ + "\xC3\xA9" + "b");
    Str255 text;
    FetchText(dialog, kTestNumber, text);
    EXPECT_EQ(FromPascal(text), long_);
    EXPECT_EQ(source.changes, Lines{"5 text"}) << "the widget must show what was kept";
    source.changes.clear();
    EditTextChanged(dialog, kTestNumber, std::string(253, 'a') + "\xC3\xA9");
    FetchText(dialog, kTestNumber, text);
    EXPECT_EQ(text[0], 255);
    EXPECT_EQ(source.changes, Lines{"5 text"}) << "another source may show the dialog";
}

TEST_F(Dialogs, PutParamTextsIntoStaticTextsAndAlerts) {
    ParamText(PascalText("^1"), PascalText("two"), nullptr, PascalText(""));
    const std::pair<const char*, const char*> cases[] = {
        {"^0:^1", "^1:two"}, {"^2^3^1", "two"}, {"^", "^"}, {"^4 ^x ^^1", "^4 ^x ^two"}};
    for (const auto& [text, want] : cases) EXPECT_EQ(SubstituteParamText(text), want);
    ParamText(PascalText("B"), PascalText("A"), nullptr, nullptr);
    ShowAlert(kTestAlert);
    EXPECT_EQ(source.alerts, Lines{"A comes after B."});
    SetEventSource(nullptr);
    testing::internal::CaptureStderr();
    ShowAlert(kTestAlert);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "A comes after B.\n");
}

TEST_F(Dialogs, SayThatCursorsAreNotAnimated) {
    testing::internal::CaptureStderr();
    InitCursorCtl(nullptr);
    RotateCursor(3);
    SpinCursor(-1);
    const std::string notice = " does nothing: this toolbox does not animate cursors.\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "InitCursorCtl" + notice + "RotateCursor" + notice + "SpinCursor" + notice);
}

} // namespace
