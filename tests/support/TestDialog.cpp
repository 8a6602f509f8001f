#include "TestDialog.h"

#include "ControlManager.h"
#include "Cursors.h"
#include "DialogResources.h"
#include "EventManager.h"
#include "HostDialogs.h"
#include "ModalDialog.h"
#include "PascalStrings.h"
#include "ResourceManager.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr short kCellPitch = 9, kCellColumns = 32, kCellRows = 4;
constexpr Point kCanvasCorner = {20, 20}, kCellsCorner = {180, 20};

struct State {
    short tool = kTestHand;
    int zoom = 1;
    Point offset; ///< of the canvas, by dragging
    bool isPainted[kCellColumns * kCellRows] = {};
    TestDialogLog log;
};

State& StateOf(DialogPtr dialog) {
    return *reinterpret_cast<State*>(GetMoveableWRefCon(dialog));
}

void Note(DialogPtr dialog, const std::string& line) {
    StateOf(dialog).log.push_back(line);
}

/// What the toolbox knows of an item.
struct ItemInfo {
    ItemInfo(DialogPtr dialog, short item) { GetDialogItem(dialog, item, &kind, &handle, &rect); }
    short kind;
    Handle handle;
    Rect rect;
};

Rect RectOf(DialogPtr dialog, short item) {
    return ItemInfo(dialog, item).rect;
}

bool KeyIsDown(short key) {
    KeyMap keys;
    GetKeys(keys);
    return keys[key >> 3] >> (key & 7) & 1;
}

struct PascalText {
    Str255 text;
    explicit PascalText(const std::string& source) { ToPascal(source, text); }
};

// Drawing

void DrawCanvas(DialogPtr dialog, short item) {
    const State& state = StateOf(dialog);
    const Rect rect = RectOf(dialog, item);
    EraseRect(&rect);
    FrameRect(&rect);
    Rect sample = {0, 0, static_cast<short>(20 * state.zoom), static_cast<short>(30 * state.zoom)};
    OffsetRect(&sample, static_cast<short>(rect.left + 10 + state.offset.h),
               static_cast<short>(rect.top + 10 + state.offset.v));
    FillRect(&sample, &kGrayPattern);
    MoveTo(static_cast<short>(rect.left + 6), static_cast<short>(rect.bottom - 6));
    TextFont(3);
    TextSize(9);
    DrawString(PascalText("drag me").text);
}

void DrawCells(DialogPtr dialog, short item) {
    const State& state = StateOf(dialog);
    const Rect rect = RectOf(dialog, item);
    const PixPatHandle color = NewPixPat();
    for (short i = 0; i < kCellColumns * kCellRows; ++i) {
        Rect cell = {0, 0, kCellPitch - 1, kCellPitch - 1};
        OffsetRect(&cell, static_cast<short>(rect.left + 1 + i % kCellColumns * kCellPitch),
                   static_cast<short>(rect.top + 1 + i / kCellColumns * kCellPitch));
        const RGBColor red = {0xFFFF, 0, 0};
        const RGBColor shade = {static_cast<std::uint16_t>(i * 512), 0x8000, 0x8000};
        MakeRGBPat(color, state.isPainted[i] ? &red : &shade);
        FillCRect(&cell, color);
    }
    DisposePixPat(color);
}

void DrawTool(DialogPtr dialog, short item) {
    const Rect rect = RectOf(dialog, item);
    const short usual = item == kTestHand ? 500 : 510;
    DrawPicture(GetPicture(static_cast<short>(usual + (StateOf(dialog).tool == item))), &rect);
    FrameRect(&rect);
}

void SetScale(DialogPtr dialog, int zoom) {
    StateOf(dialog).zoom = zoom;
    ParamText(PascalText(std::to_string(zoom)).text, PascalText("1").text, nullptr, nullptr);
    InvalItem(dialog, kTestScale);
    InvalItem(dialog, kTestCanvas);
}

// Presses

void DragCanvas(DialogPtr dialog, Point start) {
    State& state = StateOf(dialog);
    const Point before = state.offset;
    GlobalToLocal(&start);
    Point moved;
    const auto follow = [&](Point mouse) {
        moved = {static_cast<short>(mouse.v - start.v), static_cast<short>(mouse.h - start.h)};
        state.offset = {static_cast<short>(before.v + moved.v),
                        static_cast<short>(before.h + moved.h)};
        InvalItem(dialog, kTestCanvas);
    };
    Point mouse;
    while (StillDown()) {
        GetMouse(&mouse);
        follow(mouse);
    }
    EventRecord release;
    if (GetNextEvent(mUpMask, &release)) {
        GlobalToLocal(&release.where);
        follow(release.where);
    }
    Note(dialog, "dragged " + std::to_string(moved.h) + " " + std::to_string(moved.v));
}

void ZoomCanvas(DialogPtr dialog) {
    while (StillDown()) {
    }
    EventRecord release;
    if (!GetNextEvent(mUpMask, &release)) return;
    GlobalToLocal(&release.where);
    const Rect canvas = RectOf(dialog, kTestCanvas);
    if (!PtInRect(release.where, &canvas)) return;
    const int zoom = StateOf(dialog).zoom + (KeyIsDown(kKeyOption) ? -1 : 1);
    SetScale(dialog, std::clamp(zoom, 1, 16));
    Note(dialog, "zoom " + std::to_string(StateOf(dialog).zoom) + " at " +
                     std::to_string(release.where.h - canvas.left) + " " +
                     std::to_string(release.where.v - canvas.top));
}

// A fast mouse skips cells, so all from the last one to this one are painted.
void PaintCells(DialogPtr dialog) {
    State& state = StateOf(dialog);
    const Rect rect = RectOf(dialog, kTestCells);
    int last = -1;
    const auto paint = [&](Point mouse) {
        const int column = (mouse.h - rect.left) / kCellPitch;
        const int row = (mouse.v - rect.top) / kCellPitch;
        if (!PtInRect(mouse, &rect) || column >= kCellColumns || row >= kCellRows) return;
        const int cell = row * kCellColumns + column;
        const int from = last >= 0 && last / kCellColumns == row ? last : cell;
        for (int i = std::min(from, cell); i <= std::max(from, cell); ++i)
            state.isPainted[i] = true;
        last = cell;
        InvalItem(dialog, kTestCells);
    };
    do {
        Point mouse;
        GetMouse(&mouse);
        paint(mouse);
    } while (StillDown());
    EventRecord release;
    if (GetNextEvent(mUpMask, &release)) {
        GlobalToLocal(&release.where);
        paint(release.where);
    }
    const auto count = std::count(std::begin(state.isPainted), std::end(state.isPainted), true);
    Note(dialog, "painted " + std::to_string(count));
}

void ChooseTool(DialogPtr dialog, short item) {
    while (StillDown()) {
    }
    InvalItem(dialog, StateOf(dialog).tool);
    StateOf(dialog).tool = item;
    InvalItem(dialog, item);
}

// Filter

bool NumberIsDisabled(DialogPtr dialog) {
    return (ItemInfo(dialog, kTestNumber).kind & kItemDisabled) != 0;
}

void EnableNumber(DialogPtr dialog, bool enable) {
    const ItemInfo number(dialog, kTestNumber);
    const int kind = enable ? number.kind & ~kItemDisabled : number.kind | kItemDisabled;
    SetDialogItem(dialog, kTestNumber, static_cast<short>(kind), number.handle, &number.rect);
    if (enable)
        TEActivate(GetDialogTextEditHandle(dialog));
    else
        TEDeactivate(GetDialogTextEditHandle(dialog));
}

Boolean FilterPress(DialogPtr dialog, const EventRecord& event, short* item) {
    WindowPtr window;
    if (FindWindow(event.where, &window) != inContent || window != dialog) return 0;
    Point local = event.where;
    GlobalToLocal(&local);
    *item = static_cast<short>(FindDialogItem(dialog, local) + 1);
    switch (*item) {
    case kTestCanvas:
        if (StateOf(dialog).tool == kTestHand || KeyIsDown(kKeySpace))
            DragCanvas(dialog, event.where);
        else
            ZoomCanvas(dialog);
        return 1;
    case kTestCells:
        PaintCells(dialog);
        return 0;
    case kTestHand:
    case kTestZoom:
        ChooseTool(dialog, *item);
        return 0;
    case kTestNumber:
        return NumberIsDisabled(dialog);
    default:
        return 0;
    }
}

Boolean FilterKey(DialogPtr dialog, const EventRecord& event, short* item) {
    const int character = event.message & 0xFF;
    const bool isForDialog = character == '\r' || character == 3 || character == 27 ||
                             (character == '.' && (event.modifiers & cmdKey));
    if (isForDialog || !NumberIsDisabled(dialog)) return 0;
    *item = kTestNumber;
    return 1;
}

Boolean FilterNull(DialogPtr dialog, const EventRecord& event) {
    Str255 title, wanted;
    const auto cancel = reinterpret_cast<ControlHandle>(ItemInfo(dialog, kTestCancel).handle);
    GetControlTitle(cancel, title);
    GetIndString(wanted, kTestDialog, KeyIsDown(kKeyOption) ? 2 : 1);
    if (!std::equal(title, title + title[0] + 1, wanted)) SetControlTitle(cancel, wanted);

    Point local = event.where;
    GlobalToLocal(&local);
    if (FindDialogItem(dialog, local) != kTestCanvas - 1) return 0;
    const CursHandle cursor = GetCursor(kTestCursor);
    if (cursor) SetCursor(*cursor);
    return cursor != nullptr;
}

Boolean Filter(DialogPtr dialog, EventRecord* event, short* item) {
    GrafPtr before;
    GetPort(&before);
    SetPort(dialog);
    Boolean taken = 0;
    if (event->what == mouseDown) taken = FilterPress(dialog, *event, item);
    if (event->what == keyDown) taken = FilterKey(dialog, *event, item);
    if (event->what == nullEvent) taken = FilterNull(dialog, *event);
    SetPort(before);
    return taken;
}

// The dialog

void Reset(DialogPtr dialog) {
    State& state = StateOf(dialog);
    std::fill(std::begin(state.isPainted), std::end(state.isPainted), false);
    state.offset = {};
    SetScale(dialog, 1);
    for (const short item : {kTestCells, kTestCanvas, kTestHand, kTestZoom})
        InvalItem(dialog, item);
    state.tool = kTestHand;
    SetCheckBoxState(dialog, kTestAutomatic, false);
    SetCheckBoxState(dialog, kTestStayOpen, true);
    EnableNumber(dialog, true);
    StuffNumber(dialog, kTestNumber, 16);
}

void Toggle(DialogPtr dialog, short item) {
    SetCheckBoxState(dialog, item, !GetCheckBoxState(dialog, item));
    Note(dialog, GetCheckBoxState(dialog, item) ? "on" : "off");
}

bool ConfirmNumber(DialogPtr dialog) {
    std::int32_t number;
    if (!FetchNumber(dialog, kTestNumber, 2, 256, &number)) {
        Note(dialog, "refused");
        return false;
    }
    Note(dialog, "number " + std::to_string(number));
    return !GetCheckBoxState(dialog, kTestStayOpen);
}

bool CancelOrReset(DialogPtr dialog) {
    const bool resets = KeyIsDown(kKeyOption);
    Note(dialog, resets ? "reset" : "cancelled");
    if (resets) Reset(dialog);
    return !resets;
}

/// True when the hit ends the dialog.
bool ServeHit(DialogPtr dialog, short item) {
    if (item != 0) Note(dialog, "hit " + std::to_string(item));
    Str255 text;
    switch (item) {
    case kTestOK:
        return ConfirmNumber(dialog);
    case kTestCancel:
        return CancelOrReset(dialog);
    case kTestAutomatic:
        Toggle(dialog, item);
        EnableNumber(dialog, !GetCheckBoxState(dialog, item));
        break;
    case kTestStayOpen:
        Toggle(dialog, item);
        break;
    case kTestColours:
        Note(dialog, "entry " + std::to_string(GetPopUpMenuValue(dialog, item)));
        break;
    case kTestNumber:
        if (NumberIsDisabled(dialog)) {
            SetCheckBoxState(dialog, kTestAutomatic, false);
            EnableNumber(dialog, true);
            SelectTextItem(dialog, kTestNumber);
        }
        FetchText(dialog, item, text);
        Note(dialog, "text " + FromPascal(text));
        break;
    case kTestLabel:
        SelectTextItem(dialog, kTestNumber);
        break;
    default:
        break;
    }
    return false;
}

void InstallDrawing(DialogPtr dialog, short item, UserItemProc draw) {
    const ItemInfo info(dialog, item);
    SetDialogItem(dialog, item, info.kind, ProcToHandle(draw), &info.rect);
}

} // namespace

TestDialogResources::TestDialogResources() : file(OpenResFile(TEST_DIALOG_RESOURCES)) {
    if (file < 0) throw std::runtime_error("cannot open " TEST_DIALOG_RESOURCES);
}

TestDialogResources::~TestDialogResources() {
    CloseResFile(file);
}

TestDialogLog RunTestDialog() {
    State state;
    CenterDialog(GetResource(FourCC("DLOG"), kTestDialog));
    const DialogPtr dialog = GetNewDialog(kTestDialog, nullptr, nullptr);
    if (!dialog) return {"no dialog"};
    SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(&state));
    SetDialogDefaultItem(dialog, kTestOK);
    SetDialogCancelItem(dialog, kTestCancel);
    SetDialogTracksCursor(dialog, true);
    InstallDrawing(dialog, kTestCanvas, DrawCanvas);
    InstallDrawing(dialog, kTestCells, DrawCells);
    InstallDrawing(dialog, kTestHand, DrawTool);
    InstallDrawing(dialog, kTestZoom, DrawTool);
    SetOutlineGroup(dialog, kTestGroup);
    Reset(dialog);
    SetArrowCursor();
    ShowWindow(dialog);
    short item = 0;
    do MoveableModalDialog(dialog, nullptr, Filter, &item);
    while (!ServeHit(dialog, item));
    DisposeDialog(dialog);
    return state.log;
}

Point CanvasPoint(short h, short v) {
    return {static_cast<short>(kCanvasCorner.v + v), static_cast<short>(kCanvasCorner.h + h)};
}

Point CellPoint(short column, short row) {
    const auto middle = [](short cell) { return static_cast<short>(cell * kCellPitch + 4); };
    return {static_cast<short>(kCellsCorner.v + middle(row)),
            static_cast<short>(kCellsCorner.h + middle(column))};
}

std::vector<Act> TestSession() {
    return {
        // Check boxes and the disabled number, woken by a press and by a key.
        PressItem(kTestAutomatic),
        PressAt({84, 330}),
        PressItem(kTestAutomatic),
        TypeText("7"),
        // Text that is selected is replaced, and Delete takes the last character.
        PressItem(kTestLabel),
        TypeText("57"),
        PressKey(kKeyDelete),
        SetText(kTestNumber, "128"),
        // A pop-up by number and by text.
        ChooseEntry(kTestColours, 2),
        ChooseEntry(kTestColours, "Sixteen"),
        // A disabled item and an outline take no press.
        PressAt({236, 60}),
        PressAt({130, 215}),
        // Drags, the last one out of the canvas.
        Drag({CanvasPoint(50, 50), CanvasPoint(60, 52), CanvasPoint(75, 40)}),
        Drag({CanvasPoint(20, 100), CanvasPoint(20, 140), CanvasPoint(-15, 160)}),
        Drag({CellPoint(3, 1), CellPoint(5, 1), CellPoint(9, 1)}),
        // Tools and the keys that change them.
        PressItem(kTestZoom),
        PressAt(CanvasPoint(30, 40)),
        PressAt(CanvasPoint(31, 41)),
        HoldKey(kKeyOption),
        PressAt(CanvasPoint(90, 80)),
        ReleaseKey(kKeyOption),
        HoldKey(kKeySpace),
        Drag({CanvasPoint(40, 40), CanvasPoint(30, 45)}),
        ReleaseKey(kKeySpace),
        PressItem(kTestHand),
        // A press that is released elsewhere presses nothing.
        Drag({{294, 320}, {240, 320}}),
        // The keys of the default and cancel items, and Cancel with option and without.
        PressKey(kKeyReturn),
        PressItem(kTestOK),
        HoldKey(kKeyOption),
        PressItem(kTestCancel),
        ReleaseKey(kKeyOption),
        PressKey(kKeyReturn),
        PressItem(kTestCancel),
    };
}

TestDialogLog TestSessionLog() {
    // clang-format off
    return {
        "hit 3", "on", "hit 5", "text 16",
        "hit 3", "on", "hit 5", "text 16",
        "hit 11", "hit 5", "text 5", "hit 5", "text 57", "hit 5", "text 5", "hit 5", "text 128",
        "hit 4", "entry 2", "hit 4", "entry 5",
        "dragged 25 -10", "hit 7", "dragged -35 60", "hit 7", "painted 7", "hit 8",
        "hit 10", "zoom 2 at 30 40", "hit 7", "zoom 3 at 31 41", "hit 7", "zoom 2 at 90 80", "hit 7",
        "dragged -10 5", "hit 7", "hit 9",
        "hit 1", "number 128", "hit 1", "number 128",
        "hit 2", "reset", "hit 1", "number 16", "hit 2", "cancelled",
    };
    // clang-format on
}
