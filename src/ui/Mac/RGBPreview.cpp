#include "RGBPreview.h"

#include "Cursors.h"
#include "IndexedDialog.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"
#include "ModalDialog.h"
#include "PreviewDialog.h"
#include "TransparencyMap.h"

void DrawRGBCLUT(DialogPtr dialog, short item) {
    const GIF89RGBExport& context = *static_cast<PreviewDialogGlobals*>(ViewOf(dialog))->context;
    DrawCLUT(dialog, &context.palette, context.numColors, context.transIndex, item);
}

namespace {

// Takes presses in the image box.
bool ServePress(DialogPtr dialog, const EventRecord& event, PreviewView* g, short* item) {
    if (!DialogItemPoint(&event.where, dialog, item, nullptr, nullptr)) return false;
    if (IsButton(g->items, *item)) TrackToolItemHit(dialog, &event, *item, g);
    if (*item != kRGBPreviewImageItem) return false;
    TrackViewPress(dialog, g, event.where);
    return true;
}

bool ServeNullEvent(DialogPtr dialog, const EventRecord& event, PreviewView* g) {
    short item = 0;
    if (!DialogItemPoint(&event.where, dialog, &item, nullptr, nullptr)) return false;
    return ShowToolCursor(FollowTool(g, item, event.where, KeysHeld()));
}

} // namespace

Boolean PreviewDialogFilter(DialogPtr dialog, EventRecord* event, short* item) {
    const DialogAsPort port(dialog);
    const UsualPen pen;
    PreviewView* const g = ViewOf(dialog);
    if (event->what == mouseDown) return ServePress(dialog, *event, g, item);
    if (event->what == nullEvent) return ServeNullEvent(dialog, *event, g);
    return false;
}

// The dialog

namespace {

constexpr int kNoEntry = -1; // none is transparent in this preview

constexpr DrawnItem kDrawnItems[] = {{kRGBPreviewImageItem, DrawRGBImageBox},
                                     {kRGBPreviewTableItem, DrawRGBCLUT},
                                     {kRGBPreviewHandItem, DrawRGBToolItem},
                                     {kRGBPreviewZoomItem, DrawRGBToolItem},
                                     {kRGBPreviewFrameItem, DrawToolBoxFrame}};

short ShowDialog(DialogPtr dialog, PreviewDialogGlobals* g) {
    const GIF89RGBExport& context = *g->context;
    g->imageData = context.gifBuffer;
    g->rowBytes = context.gifRowBytes;
    g->imageSize = {context.shape.rows, context.shape.columns};
    FixupPmTable(g->previewColors, nullptr, &context.palette, {}, kNoEntry, true);
    OpenView(dialog, g);
    SetArrowCursor();
    ShowWindow(dialog);
    for (short item = 0; item != kRGBPreviewDoneItem;)
        MoveableModalDialog(dialog, context.exportRecord->eventProc.Get(), PreviewDialogFilter,
                            &item);
    return noErr;
}

} // namespace

short DoPreview(GIF89RGBExport& context, unsigned char exact, unsigned char supplied) {
    // Deliberate: how these two end is not looked at. The export does both again, and reports.
    context.SetupPalette(exact, supplied);
    context.MakeGIFBuffer();

    PreviewDialogGlobals g(&context);
    return RunPreviewDialog({kRGBPreviewDialog, kRGBPreviewDoneItem, kDrawnItems}, &g,
                            [&](DialogPtr dialog) { return ShowDialog(dialog, &g); });
}
