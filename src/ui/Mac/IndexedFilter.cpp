#include "IndexedFilter.h"

#include "IndexedDialog.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"
#include "ModuleResources.h"
#include "PreviewTools.h"
#include "TransparencyMap.h"

namespace {

void RedrawWhenNeeded(DialogPtr dialog, IndexedDialogGlobals* g) {
    if (!g->needsRedraw) return;
    g->needsRedraw = 0;
    constexpr short kDrawnItems[] = {kIndexedPreviewItem, kIndexedTableItem,   kIndexedHandItem,
                                     kIndexedZoomItem,    kIndexedDropperItem, kIndexedSwatchItem};
    for (const short item : kDrawnItems) InvalItem(dialog, item);
}

bool ServePress(DialogPtr dialog, const EventRecord& event, IndexedDialogGlobals* g,
                short* itemHit) {
    if (!DialogItemPoint(&event.where, dialog, itemHit, nullptr, nullptr)) return false;
    if (*itemHit == kIndexedTableItem) CLUTTrackMouse(dialog, g);
    if (IsButton(g->items, *itemHit)) TrackToolItemHit(dialog, &event, *itemHit, g);
    if (*itemHit != kIndexedPreviewItem) return false;
    if (ToolTypeToToolButton(g->currentTool) == ToolButton::eyedropper)
        EyeDropperTrackMouse(dialog, g);
    else
        TrackViewPress(dialog, g, event.where);
    return true;
}

// The mouse on its way

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
    return FollowTool(g, item, where, keys);
}

bool ServeNullEvent(DialogPtr dialog, const EventRecord& event, IndexedDialogGlobals* g) {
    const HeldKeys keys = KeysHeld();
    ShowCancelTitle(dialog, keys.option);
    return ShowToolCursor(CursorUnderMouse(dialog, event.where, g, keys));
}

} // namespace

Boolean DialogFilter(DialogPtr dialog, EventRecord* event, short* itemHit) {
    const DialogAsPort port(dialog);
    const UsualPen pen;
    IndexedDialogGlobals* const g = GlobalsOf(dialog);
    RedrawWhenNeeded(dialog, g);
    if (event->what == mouseDown) return ServePress(dialog, *event, g, itemHit);
    if (event->what == nullEvent) return ServeNullEvent(dialog, *event, g);
    return false;
}
