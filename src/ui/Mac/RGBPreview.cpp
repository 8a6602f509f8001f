#include "RGBPreview.h"

#include "Cursors.h"
#include "DialogResources.h"
#include "HostDialogs.h"
#include "IndexedFilter.h"
#include "IndexedPreview.h"
#include "ItemDrawing.h"
#include "MemoryManager.h"
#include "ModalDialog.h"
#include "ModuleResources.h"
#include "PreviewTools.h"
#include "PreviewTracking.h"
#include "ResourceManager.h"
#include "TransparencyMap.h"

#include <algorithm>
#include <new>

namespace {

constexpr OSErr kNoDialog = -1;
constexpr int kMostShrink = 16;
constexpr int kBufferSlack = 16; // rows and columns that a view may run over its box
constexpr PreviewItems kItems = {kRGBPreviewImageItem, kRGBPreviewScaleItem};

PreviewDialogGlobals* GlobalsOf(DialogPtr dialog) {
    return reinterpret_cast<PreviewDialogGlobals*>(GetMoveableWRefCon(dialog));
}

ZoomFactors ZoomOf(const PreviewDialogGlobals& g) {
    return {g.enlarge, g.shrink, g.maxShrink};
}

ToolButtonState ButtonsOf(const PreviewDialogGlobals& g) {
    return {g.zoomButtonIsIn != 0, false, false};
}

ToolButton ButtonOfItem(short item) {
    return item == kRGBPreviewZoomItem ? ToolButton::zoom : ToolButton::hand;
}

short ItemOfTool(ToolType tool) {
    return ToolTypeToToolButton(tool) == ToolButton::zoom ? kRGBPreviewZoomItem
                                                          : kRGBPreviewHandItem;
}

} // namespace

// Drawing

void DrawRGBImageContent(PreviewDialogGlobals* g, Rect* viewRect) {
    IndexedDialogGlobals view; // shown as an indexed picture without transparency of its own
    view.imageData = g->context->gifBuffer;
    view.rowBytes = g->context->gifRowBytes;
    view.enlarge = g->enlarge;
    view.shrink = g->shrink;
    view.srcRect = g->srcRect;
    view.dstRect = g->dstRect;
    view.previewBuffer = g->previewBuffer;
    view.previewRowBytes = g->previewRowBytes;
    view.previewColors = g->previewColors;
    view.previewDirty = g->previewDirty;
    DrawImageContent(&view, viewRect);
    g->previewRowBytes = view.previewRowBytes;
    g->previewDirty = view.previewDirty;
}

void DrawRGBImageBox(DialogPtr dialog, short item) {
    const UsualPen pen;
    Rect rect = ItemRect(dialog, item);
    FillRect(&rect, &kGrayPattern);
    DrawRGBImageContent(GlobalsOf(dialog), &rect);
}

void DrawRGBCLUT(DialogPtr dialog, short item) {
    const GIF89RGBExport& context = *GlobalsOf(dialog)->context;
    DrawCLUT(dialog, &context.palette, context.numColors, context.transIndex, item);
}

void DrawRGBToolItem(DialogPtr dialog, short item) {
    const PreviewDialogGlobals& g = *GlobalsOf(dialog);
    const bool isSelected = ItemOfTool(g.selectedTool) == item;
    DrawToolItem(dialog, item, ToolPictureID(ButtonOfItem(item), ButtonsOf(g), isSelected));
}

// Zoom and tools

void FitPreview(PreviewDialogGlobals* g, Point box) {
    const auto shrinkFor = [](int length, int room) { return (length + room - 1) / room; };
    const int shrink =
        std::max({shrinkFor(g->imageSize.v, box.v), shrinkFor(g->imageSize.h, box.h), 1});
    g->maxShrink = std::min(shrink, kMostShrink);
    const auto shown = [](int length, int room) {
        return static_cast<std::int16_t>(std::min(length, room * kMostShrink));
    };
    g->srcRect = {0, 0, shown(g->imageSize.v, box.v), shown(g->imageSize.h, box.h)};
}

void DoRGBZoom(DialogPtr dialog, zoomDirection direction, PreviewDialogGlobals* g,
               const Rect* viewRect, Boolean doubleStep, const Point* centre) {
    ZoomFactors zoom = ZoomOf(*g);
    if (StepZoom(&zoom, direction, doubleStep != 0))
        ShowZoom(dialog, g, zoom, viewRect, centre, kItems);
}

void ZoomOneToOne(DialogPtr dialog, PreviewDialogGlobals* g, short mode) {
    ZoomFactors zoom = ZoomOf(*g);
    if (!ZoomToMode(&zoom, mode)) return;
    const Rect viewRect = ItemRect(dialog, kRGBPreviewImageItem);
    ShowZoom(dialog, g, zoom, &viewRect, nullptr, kItems);
}

void TrackToolItemHit(DialogPtr dialog, const EventRecord* event, short item,
                      PreviewDialogGlobals* g) {
    // Deliberate: remembered between dialogs, as in the indexed dialog.
    static thread_local LastPress lastPress;
    const bool isDouble = NotePress(&lastPress, item, event->when, TickCount(), GetDblTime());
    const bool optionDown = IsThisKeyDown(kKeyOption) != 0;
    while (StillDown()) {
    }

    ToolButtonState buttons = ButtonsOf(*g);
    const auto choice = ChooseTool(ButtonOfItem(item), optionDown, isDouble, &buttons);
    if (!choice) return;
    g->zoomButtonIsIn = buttons.zoomIsIn;
    InvalItem(dialog, ItemOfTool(g->selectedTool));
    InvalItem(dialog, item);
    g->selectedTool = g->currentTool = choice->tool;
    if (choice->zoomMode == kNoZoomMode) return;
    ZoomOneToOne(dialog, g, choice->zoomMode);
    g->previewDirty = 1;
}

// Events

namespace {

void ServeImagePress(DialogPtr dialog, PreviewDialogGlobals* g, Point start) {
    if (g->currentTool == handTool)
        return TrackHand(dialog, g, kRGBPreviewImageItem, start, DrawRGBImageContent);
    const zoomDirection direction = g->currentTool == zoomInTool ? zoomIn : zoomOut;
    TrackZoomClick(dialog, g, kRGBPreviewImageItem, [&](const Rect& view, Point centre) {
        DoRGBZoom(dialog, direction, g, &view, false, &centre);
    });
}

// Takes presses in the image box.
bool ServePress(DialogPtr dialog, const EventRecord& event, PreviewDialogGlobals* g, short* item) {
    if (!DialogItemPoint(&event.where, dialog, item, nullptr, nullptr)) return false;
    if (*item == kRGBPreviewHandItem || *item == kRGBPreviewZoomItem)
        TrackToolItemHit(dialog, &event, *item, g);
    if (*item != kRGBPreviewImageItem) return false;
    ServeImagePress(dialog, g, event.where);
    return true;
}

// Over the picture the held keys choose the tool, and the cursor tells which.
bool ServeNullEvent(DialogPtr dialog, const EventRecord& event, PreviewDialogGlobals* g) {
    short item = 0;
    Point local = event.where;
    GlobalToLocal(&local);
    if (!DialogItemPoint(&event.where, dialog, &item, nullptr, nullptr) ||
        item != kRGBPreviewImageItem || !PtInRect(local, &g->dstRect))
        return false;
    const HeldKeys keys = {IsThisKeyDown(kKeySpace) != 0, IsThisKeyDown(kKeyCommand) != 0,
                           IsThisKeyDown(kKeyShift) != 0, IsThisKeyDown(kKeyOption) != 0};
    g->currentTool = ToolForKeys(g->selectedTool, keys);
    if (const CursHandle cursor = GetCursor(GetToolCursorID(g->currentTool))) SetCursor(*cursor);
    return true;
}

} // namespace

Boolean PreviewDialogFilter(DialogPtr dialog, EventRecord* event, short* item) {
    const DialogAsPort port(dialog);
    const UsualPen pen;
    PreviewDialogGlobals* const g = GlobalsOf(dialog);
    if (event->what == mouseDown) return ServePress(dialog, *event, g, item);
    if (event->what == nullEvent) return ServeNullEvent(dialog, *event, g);
    return false;
}

// The dialog

namespace {

void InstallDrawProcedures(DialogPtr dialog) {
    static constexpr struct {
        short item;
        UserItemProc draw;
    } kProcedures[] = {{kRGBPreviewImageItem, DrawRGBImageBox},
                       {kRGBPreviewTableItem, DrawRGBCLUT},
                       {kRGBPreviewHandItem, DrawRGBToolItem},
                       {kRGBPreviewZoomItem, DrawRGBToolItem},
                       {kRGBPreviewFrameItem, DrawToolBoxFrame}};
    for (const auto& [item, draw] : kProcedures) {
        short kind = 0;
        Handle handle = nullptr;
        Rect rect;
        GetDialogItem(dialog, item, &kind, &handle, &rect);
        SetDialogItem(dialog, item, kind, ProcToHandle(draw), &rect);
    }
}

CTabHandle NewPaletteColors(const RGBLookUpTable& palette) {
    auto* const colors = reinterpret_cast<CTabHandle>(NewHandle(sizeof(ColorTable)));
    if (!colors) return nullptr;
    new (*colors) ColorTable{};
    (*colors)->ctSize = 255;
    for (std::int16_t i = 0; i < 256; ++i)
        (*colors)->ctTable[i] = {i, WidenColor(TableEntry(palette, i))};
    CTabChanged(colors);
    return colors;
}

// False without memory; what was had is the caller's to free all the same.
bool AllocatePreview(PreviewDialogGlobals* g, int boxRows, int boxColumns) {
    g->previewRowBytes = (boxColumns + kBufferSlack + 3) / 4 * 4;
    g->previewBuffer = NewPtr(Size{boxRows + kBufferSlack} * g->previewRowBytes);
    g->previewColors = NewPaletteColors(g->context->palette);
    return g->previewBuffer && g->previewColors;
}

// Opens the view over the whole image, at 1:1.
void OpenView(DialogPtr dialog, PreviewDialogGlobals* g) {
    const PictureShape& shape = g->context->shape;
    const Rect view = ItemRect(dialog, kRGBPreviewImageItem);
    g->imageSize = {shape.rows, shape.columns};
    FitPreview(g, {static_cast<std::int16_t>(view.bottom - view.top),
                   static_cast<std::int16_t>(view.right - view.left)});
    CalculateViewRects(&g->srcRect, &g->dstRect, &view, g->shrink, g->enlarge, &g->imageSize,
                       nullptr);
    SetZoomFactor(dialog, g->enlarge, g->shrink, kRGBPreviewScaleItem);
}

void RunDialog(DialogPtr dialog, PreviewDialogGlobals* g) {
    SetDialogDefaultItem(dialog, kRGBPreviewDoneItem);
    SetDialogCancelItem(dialog, kRGBPreviewDoneItem);
    SetDialogTracksCursor(dialog, true);
    SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(g));
    InstallDrawProcedures(dialog);
    OpenView(dialog, g);
    SetArrowCursor();
    ShowWindow(dialog);
    for (short item = 0; item != kRGBPreviewDoneItem;)
        MoveableModalDialog(dialog, g->context->exportRecord->eventProc.Get(), PreviewDialogFilter,
                            &item);
}

} // namespace

short DoPreview(GIF89RGBExport& context, unsigned char exact, unsigned char supplied) {
    // Deliberate: how these two end is not looked at. The export does both again, and reports.
    context.SetupPalette(exact, supplied);
    context.MakeGIFBuffer();

    const Handle resource = GetResource(FourCC("DLOG"), kRGBPreviewDialog);
    if (!resource) return kNoDialog;
    HNoPurge(resource);
    CenterDialog(resource);
    short code = kNoDialog;
    if (const DialogPtr dialog = GetNewDialog(kRGBPreviewDialog, nullptr, nullptr)) {
        PreviewDialogGlobals g;
        g.context = &context;
        const Rect view = ItemRect(dialog, kRGBPreviewImageItem);
        const bool canShow = AllocatePreview(&g, view.bottom - view.top, view.right - view.left);
        if (canShow) RunDialog(dialog, &g);
        code = canShow ? OSErr{noErr} : OSErr{memFullErr};
        DisposePtr(g.previewBuffer);
        DisposeHandle(reinterpret_cast<Handle>(g.previewColors));
        DisposeDialog(dialog);
    }
    HPurge(resource);
    return code;
}
