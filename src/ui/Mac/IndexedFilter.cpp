#include "IndexedFilter.h"

#include "ControlManager.h"
#include "Cursors.h"
#include "IndexedDialog.h"
#include "IndexedPreview.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"
#include "ModuleResources.h"
#include "PascalStrings.h"
#include "PreviewTools.h"
#include "PreviewTracking.h"
#include "ResourceManager.h"
#include "TransparencyMap.h"

namespace {

constexpr short kNoCursor = -1;

void RedrawWhenNeeded(DialogPtr dialog, IndexedDialogGlobals* g) {
    if (!g->needsRedraw) return;
    g->needsRedraw = 0;
    constexpr short kDrawnItems[] = {kIndexedPreviewItem, kIndexedTableItem,   kIndexedHandItem,
                                     kIndexedZoomItem,    kIndexedDropperItem, kIndexedSwatchItem};
    for (const short item : kDrawnItems) InvalItem(dialog, item);
}

// Presses

void ServePreviewPress(DialogPtr dialog, IndexedDialogGlobals* g, Point start) {
    switch (ToolTypeToToolButton(g->currentTool)) {
    case ToolButton::hand:
        return TrackHand(dialog, g, kIndexedPreviewItem, start, DrawImageContent);
    case ToolButton::zoom: {
        const zoomDirection direction = g->currentTool == zoomInTool ? zoomIn : zoomOut;
        return TrackZoomClick(dialog, g, kIndexedPreviewItem, [&](const Rect& view, Point centre) {
            DoZoom(dialog, direction, g, &view, false, &centre);
        });
    }
    case ToolButton::eyedropper:
        return EyeDropperTrackMouse(dialog, g);
    }
}

bool ServePress(DialogPtr dialog, const EventRecord& event, IndexedDialogGlobals* g,
                short* itemHit) {
    if (!DialogItemPoint(&event.where, dialog, itemHit, nullptr, nullptr)) return false;
    switch (*itemHit) {
    case kIndexedPreviewItem:
        ServePreviewPress(dialog, g, event.where);
        return true;
    case kIndexedTableItem:
        CLUTTrackMouse(dialog, g);
        return false;
    case kIndexedHandItem:
    case kIndexedZoomItem:
    case kIndexedDropperItem:
        TrackToolItemHit(dialog, &event, *itemHit, g);
        return false;
    default:
        return false;
    }
}

// The mouse on its way

void UpdateCancelTitle(DialogPtr dialog, bool option) {
    Str255 wanted, shown;
    GetIndString(wanted, kDialogStrings, option ? kResetString : kCancelString);
    const ControlHandle button = ItemToControl(dialog, kCancelItem);
    GetControlTitle(button, shown);
    if (FromPascal(shown) != FromPascal(wanted)) SetControlTitle(button, wanted);
}

short TableCursor(ToolType selected, const HeldKeys& keys) {
    if (keys.shift || (selected == eyeDropperPlusTool && !keys.command))
        return GetToolCursorID(eyeDropperPlusTool);
    if (keys.command || selected == eyeDropperMinusTool)
        return GetToolCursorID(eyeDropperMinusTool);
    return kNoCursor;
}

/// Chooses the tool and the cursor for what lies under the mouse.
short CursorUnderMouse(DialogPtr dialog, Point where, IndexedDialogGlobals* g,
                       const HeldKeys& keys) {
    short item = 0;
    if (!DialogItemPoint(&where, dialog, &item, nullptr, nullptr)) return kNoCursor;
    if (item == kIndexedTableItem && !g->maskedData) return TableCursor(g->selectedTool, keys);
    GlobalToLocal(&where);
    if (item != kIndexedPreviewItem || !PtInRect(where, &g->dstRect)) return kNoCursor;
    g->currentTool = ToolForKeys(g->selectedTool, keys);
    return GetToolCursorID(g->currentTool);
}

bool ServeNullEvent(DialogPtr dialog, const EventRecord& event, IndexedDialogGlobals* g) {
    const HeldKeys keys = {IsThisKeyDown(kKeySpace) != 0, IsThisKeyDown(kKeyCommand) != 0,
                           IsThisKeyDown(kKeyShift) != 0, IsThisKeyDown(kKeyOption) != 0};
    UpdateCancelTitle(dialog, keys.option);
    const short cursorID = CursorUnderMouse(dialog, event.where, g, keys);
    if (cursorID == kNoCursor) return false;
    const CursHandle cursor = GetCursor(cursorID);
    if (cursor) SetCursor(*cursor);
    return true;
}

} // namespace

ToolType ToolForKeys(ToolType selected, const HeldKeys& keys) {
    const ToolButton button = keys.space ? ToolButton::hand : ToolTypeToToolButton(selected);
    if (button == ToolButton::eyedropper) {
        if (keys.shift) return eyeDropperPlusTool;
        return keys.command ? eyeDropperMinusTool : selected;
    }
    if (keys.option) return zoomOutTool;
    if (keys.command) return zoomInTool;
    return button == ToolButton::hand ? handTool : selected;
}

Boolean DialogFilter(DialogPtr dialog, EventRecord* event, short* itemHit) {
    const DialogAsPort port(dialog);
    const UsualPen pen;
    IndexedDialogGlobals* const g = GlobalsOf(dialog);
    RedrawWhenNeeded(dialog, g);
    if (event->what == mouseDown) return ServePress(dialog, *event, g, itemHit);
    if (event->what == nullEvent) return ServeNullEvent(dialog, *event, g);
    return false;
}
