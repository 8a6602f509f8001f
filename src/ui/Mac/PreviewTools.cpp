#include "PreviewTools.h"

#include "HostDialogs.h"
#include "IndexedDialog.h"
#include "ItemDrawing.h"
#include "ModuleResources.h"

#include <algorithm>

namespace {

constexpr std::int32_t kTwoDigits = 10;
constexpr PreviewItems kIndexedItems = {kIndexedPreviewItem, kIndexedZoomTextItem};

void PrependSpace(StringPtr text) {
    std::copy_backward(text + 1, text + 1 + text[0], text + 2 + text[0]);
    text[1] = ' ';
    ++text[0];
}

ZoomFactors ZoomOf(const IndexedDialogGlobals& g) {
    return {g.enlarge, g.shrink, g.maxShrink};
}

ToolButtonState ButtonsOf(const IndexedDialogGlobals& g) {
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

void DoZoom(DialogPtr dialog, zoomDirection direction, IndexedDialogGlobals* g,
            const Rect* viewRect, Boolean doubleStep, const Point* centre) {
    ZoomFactors zoom = ZoomOf(*g);
    if (!StepZoom(&zoom, direction, doubleStep != 0)) return;
    ShowZoom(dialog, g, zoom, viewRect, centre, kIndexedItems);
}

void ZoomOneToOne(DialogPtr dialog, IndexedDialogGlobals* g, short mode) {
    ZoomFactors zoom = ZoomOf(*g);
    if (!ZoomToMode(&zoom, mode)) return;
    const Rect viewRect = ItemRect(dialog, kIndexedPreviewItem);
    ShowZoom(dialog, g, zoom, &viewRect, nullptr, kIndexedItems);
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

void DrawIndexedToolItem(DialogPtr dialog, short item) {
    const IndexedDialogGlobals* const g = GlobalsOf(dialog);
    const bool isSelected = ToolTypeToToolSlot(g->selectedTool) == item;
    DrawToolItem(dialog, item,
                 ToolPictureID(ToolSlotToToolButton(item), ButtonsOf(*g), isSelected));
}

void SetCurrentToolItem(DialogPtr dialog, IndexedDialogGlobals* g, ToolType tool) {
    const short oldItem = ToolTypeToToolSlot(g->selectedTool);
    g->selectedTool = tool;
    InvalItem(dialog, oldItem);
    InvalItem(dialog, ToolTypeToToolSlot(tool));
}

void TrackToolItemHit(DialogPtr dialog, const EventRecord* event, short item,
                      IndexedDialogGlobals* g) {
    // Deliberate: each thread remembers it between dialogs, so that a press on the same button of
    // a dialog opened soon after counts as the second of a double click.
    static thread_local LastPress lastPress;
    const bool isDouble = NotePress(&lastPress, item, event->when, TickCount(), GetDblTime());
    const bool optionDown = IsThisKeyDown(kKeyOption) != 0;
    while (StillDown()) {
    }

    ToolButtonState buttons = ButtonsOf(*g);
    const auto choice = ChooseTool(ToolSlotToToolButton(item), optionDown, isDouble, &buttons);
    if (!choice) return;
    g->zoomButtonIsIn = buttons.zoomIsIn;
    g->dropperButtonIsPlus = buttons.dropperIsPlus;
    SetCurrentToolItem(dialog, g, choice->tool);
    g->currentTool = choice->tool;
    if (choice->zoomMode == kNoZoomMode) return;
    ZoomOneToOne(dialog, g, choice->zoomMode);
    g->previewDirty = 1;
}

Boolean IsThisKeyDown(short keyCode) {
    KeyMap keys;
    GetKeys(keys);
    return keys[keyCode >> 3] >> (keyCode & 7) & 1;
}
