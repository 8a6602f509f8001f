#include "PreviewTools.h"

#include "Cursors.h"
#include "EventManager.h"
#include "HostDialogs.h"
#include "IndexedDialog.h"
#include "IndexedPreview.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"

#include <algorithm>
#include <optional>

namespace {

constexpr std::int32_t kTwoDigits = 10;

void PrependSpace(StringPtr text) {
    std::copy_backward(text + 1, text + 1 + text[0], text + 2 + text[0]);
    text[1] = ' ';
    ++text[0];
}

ZoomFactors ZoomOf(const PreviewView& g) {
    return {g.enlarge, g.shrink, g.maxShrink};
}

// Takes over a scale and shows it.
void ShowZoom(DialogPtr dialog, PreviewView* g, const ZoomFactors& zoom, const Rect* viewRect,
              const Point* centre) {
    g->enlarge = zoom.enlarge;
    g->shrink = zoom.shrink;
    CalculateViewRects(&g->srcRect, &g->dstRect, viewRect, g->shrink, g->enlarge, &g->imageSize,
                       centre);
    SetZoomFactor(dialog, g->enlarge, g->shrink, g->items.scale);
    InvalItem(dialog, g->items.image);
}

ToolButtonState ButtonsOf(const PreviewView& g) {
    return {g.zoomButtonIsIn != 0, g.dropperButtonIsPlus != 0, g.maskedData != nullptr};
}

} // namespace

void SetZoomFactor(DialogPtr dialog, std::int32_t enlarge, std::int32_t shrink, short item) {
    constexpr std::uint8_t empty[] = {0};
    Str255 enlargeText, shrinkText;
    NumToString(enlarge, enlargeText);
    if (enlarge < kTwoDigits && shrink < kTwoDigits) PrependSpace(enlargeText);
    NumToString(shrink, shrinkText);
    ParamText(enlargeText, shrinkText, empty, empty);
    InvalItem(dialog, item);
}

void DoZoom(DialogPtr dialog, zoomDirection direction, PreviewView* g, const Rect* viewRect,
            Boolean doubleStep, const Point* centre) {
    ZoomFactors zoom = ZoomOf(*g);
    if (StepZoom(&zoom, direction, doubleStep != 0)) ShowZoom(dialog, g, zoom, viewRect, centre);
}

void ZoomOneToOne(DialogPtr dialog, PreviewView* g, short mode) {
    ZoomFactors zoom = ZoomOf(*g);
    if (!ZoomToMode(&zoom, mode)) return;
    const Rect viewRect = ItemRect(dialog, g->items.image);
    ShowZoom(dialog, g, zoom, &viewRect, nullptr);
}

void DrawToolItem(DialogPtr dialog, short item, short pictID) {
    const UsualPen pen;
    const Rect rect = ItemRect(dialog, item);
    const PicHandle picture = GetPicture(pictID);
    if (picture != nullptr) DrawPicture(picture, &rect);
    FrameRect(&rect);
}

void DrawToolBoxFrame(DialogPtr dialog, short item) {
    const UsualPen pen;
    const Rect rect = ItemRect(dialog, item);
    FrameRect(&rect);
}

void DrawToolButton(DialogPtr dialog, short item) {
    const PreviewView& g = *ViewOf(dialog);
    const bool isSelected = SlotOfTool(g.items, g.selectedTool) == item;
    DrawToolItem(dialog, item,
                 ToolPictureID(ButtonOfSlot(g.items, item), ButtonsOf(g), isSelected));
}

void SetCurrentToolItem(DialogPtr dialog, PreviewView* g, ToolType tool) {
    const short oldItem = SlotOfTool(g->items, g->selectedTool);
    g->selectedTool = tool;
    InvalItem(dialog, oldItem);
    InvalItem(dialog, SlotOfTool(g->items, tool));
}

void TrackToolItemHit(DialogPtr dialog, const EventRecord* event, short item, PreviewView* g) {
    // Deliberate: each thread remembers it between dialogs, so that a press on the same button of
    // a dialog opened soon after counts as the second of a double click.
    static thread_local LastPress lastPress;
    const bool isDouble = NotePress(&lastPress, item, event->when, TickCount(), GetDblTime());
    const bool optionDown = IsThisKeyDown(kKeyOption) != 0;
    while (StillDown()) {
    }

    ToolButtonState buttons = ButtonsOf(*g);
    const auto choice = ChooseTool(ButtonOfSlot(g->items, item), optionDown, isDouble, &buttons);
    if (!choice) return;
    g->zoomButtonIsIn = buttons.zoomIsIn;
    g->dropperButtonIsPlus = buttons.dropperIsPlus;
    SetCurrentToolItem(dialog, g, choice->tool);
    g->currentTool = choice->tool;
    if (choice->zoomMode == kNoZoomMode) return;
    ZoomOneToOne(dialog, g, choice->zoomMode);
    g->previewDirty = 1;
}

namespace {

// Drags the view. Every place of the mouse is shown, with the state of the drag, so that the box
// may be drawn at any time.
void TrackHand(DialogPtr dialog, PreviewView* g, Point start) {
    const Rect source = g->srcRect, place = g->dstRect;
    Rect view = ItemRect(dialog, g->items.image);
    const auto show = [&](Point mouse) {
        g->srcRect = source;
        g->dstRect = place;
        HandTrackMouse(mouse, start, g->srcRect, view, g->dstRect, g->imageSize, g->enlarge,
                       g->shrink);
        g->previewDirty = 1;
        DrawImageContent(g, &view);
    };
    std::optional<Point> shown;
    do {
        Point mouse;
        GetMouse(&mouse);
        LocalToGlobal(&mouse);
        if (shown == mouse) continue;
        show(mouse);
        shown = mouse;
    } while (StillDown());
    EventRecord release;
    if (GetNextEvent(mUpMask, &release)) show(release.where);
}

void TrackZoomClick(DialogPtr dialog, PreviewView* g) {
    while (StillDown()) {
    }
    EventRecord release;
    short item = 0;
    Point offset;
    Rect view;
    if (!GetNextEvent(mUpMask, &release) ||
        !DialogItemPoint(&release.where, dialog, &item, &offset, &view) || item != g->items.image)
        return;
    // Deliberate: the offset counts from the item's corner and not from where the picture begins,
    // so that a click on a small picture in the middle of the box zooms about a point beside it.
    const auto inImage = [&](int distance, int first) {
        return static_cast<std::int16_t>(distance * g->shrink / g->enlarge + first);
    };
    const Point centre = {inImage(offset.v, g->srcRect.top), inImage(offset.h, g->srcRect.left)};
    DoZoom(dialog, g->currentTool == zoomInTool ? zoomIn : zoomOut, g, &view, false, &centre);
    g->previewDirty = 1;
}

} // namespace

void TrackViewPress(DialogPtr dialog, PreviewView* g, Point start) {
    if (g->currentTool == handTool) return TrackHand(dialog, g, start);
    TrackZoomClick(dialog, g);
}

Boolean IsThisKeyDown(short keyCode) {
    KeyMap keys;
    GetKeys(keys);
    return keys[keyCode >> 3] >> (keyCode & 7) & 1;
}

HeldKeys KeysHeld() {
    return {IsThisKeyDown(kKeySpace) != 0, IsThisKeyDown(kKeyCommand) != 0,
            IsThisKeyDown(kKeyShift) != 0, IsThisKeyDown(kKeyOption) != 0};
}

short FollowTool(PreviewView* g, short item, Point where, const HeldKeys& keys) {
    GlobalToLocal(&where);
    if (item != g->items.image || !PtInRect(where, &g->dstRect)) return kNoCursor;
    g->currentTool = ToolForKeys(g->selectedTool, keys);
    return GetToolCursorID(g->currentTool);
}

bool ShowToolCursor(short cursorID) {
    if (cursorID == kNoCursor) return false;
    if (const CursHandle cursor = GetCursor(cursorID)) SetCursor(*cursor);
    return true;
}
