#include "TransparencyMap.h"

#include "IndexedDialog.h"
#include "IndexedPreview.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"
#include "ModuleResources.h"
#include "PreviewTools.h"

#include <algorithm>

namespace {

constexpr int kCells = 256;

Rect CellRect(const Rect& table, int index) {
    const int top = table.top + 1 + index / kCellsInRow * kCellPitch;
    const int left = table.left + 1 + index % kCellsInRow * kCellPitch;
    const auto narrow = [](int value) { return static_cast<std::int16_t>(value); };
    return {narrow(top), narrow(left), narrow(top + kCellSize), narrow(left + kCellSize)};
}

/// Shows in table, swatch and preview that the mark of an entry has changed. The swatch shows and
/// can be used as long as there are marks; `changesSwatch` when the first came or the last went.
void ShowMark(DialogPtr dialog, IndexedDialogGlobals* g, int index, bool changesSwatch) {
    const bool isMarked = g->transMap[index] != 0;
    (*g->previewColors)->ctTable[index].rgb =
        WidenColor(isMarked ? g->transparentColor : TableEntry(*g->palette, index));
    CTabChanged(g->previewColors);
    {
        const UsualPen pen;
        HighlightCLUTSelection(dialog, index, !isMarked);
    }
    if (changesSwatch) {
        DrawColorBoxIndex(dialog, kIndexedSwatchItem, g);
        EnableDisableDialogItem(dialog, kIndexedSwatchItem, isMarked);
    }
    Rect preview = ItemRect(dialog, kIndexedPreviewItem);
    DrawImageContent(g, &preview);
}

enum class Marking : std::uint8_t { none, add, remove };

void ChangeMark(DialogPtr dialog, IndexedDialogGlobals* g, int index, Marking marking) {
    if (marking == Marking::add) AddToTransMap(dialog, g, index);
    if (marking == Marking::remove) RemoveFromTransMap(dialog, g, index);
}

Marking TableMarking(const IndexedDialogGlobals& g) {
    const bool command = IsThisKeyDown(kKeyCommand), shift = IsThisKeyDown(kKeyShift);
    if (shift) return Marking::add;
    if (command) return Marking::remove;
    if (g.selectedTool == eyeDropperPlusTool) return Marking::add;
    if (g.selectedTool == eyeDropperMinusTool) return Marking::remove;
    return Marking::none;
}

void WaitForRelease() {
    while (StillDown()) {
    }
}

/// Calls `visit` with the local mouse position at the press and after each look for the release:
/// a click may be over before the first look.
template <class Visit> void VisitWhileDown(Visit visit) {
    do {
        Point mouse;
        GetMouse(&mouse);
        visit(mouse);
    } while (StillDown());
}

/// Index byte of the image pixel that is drawn at a point of dstRect.
int IndexAt(const IndexedDialogGlobals& g, Point local) {
    const auto inImage = [&](int offset, int first) {
        return offset * g.shrink / g.enlarge + first;
    };
    const int row = inImage(local.v - g.dstRect.top, g.srcRect.top);
    const int column = inImage(local.h - g.dstRect.left, g.srcRect.left);
    return g.imageData[std::ptrdiff_t{row} * g.rowBytes + column];
}

} // namespace

void AddToTransMap(DialogPtr dialog, IndexedDialogGlobals* g, int index) {
    if (index < 0 || index >= kCells || g->transMap[index] != 0) return;
    const bool isFirst = !IsThereAnyTransparency(g->transMap);
    g->transMap[index] = 1;
    ShowMark(dialog, g, index, isFirst);
}

void RemoveFromTransMap(DialogPtr dialog, IndexedDialogGlobals* g, int index) {
    if (index < 0 || index >= kCells || g->transMap[index] == 0) return;
    g->transMap[index] = 0;
    ShowMark(dialog, g, index, !IsThereAnyTransparency(g->transMap));
}

void EyeDropperTrackMouse(DialogPtr dialog, IndexedDialogGlobals* g) {
    if (g->maskedData) return WaitForRelease();
    const Marking marking = g->currentTool == eyeDropperPlusTool ? Marking::add : Marking::remove;
    VisitWhileDown([&](Point mouse) {
        if (!PtInRect(mouse, &g->dstRect)) return;
        const int index = IndexAt(*g, mouse);
        // Deliberate: one more than the entries in use, where the colour table takes none. An index
        // just past a table that was cut short can still be picked where it is seen.
        if (index <= g->numColors) ChangeMark(dialog, g, index, marking);
    });
}

void CLUTTrackMouse(DialogPtr dialog, IndexedDialogGlobals* g) {
    if (g->maskedData) return WaitForRelease();
    const Marking marking = TableMarking(*g);
    VisitWhileDown([&](Point mouse) {
        LocalToGlobal(&mouse);
        short item = 0;
        Point offset;
        if (!DialogItemPoint(&mouse, dialog, &item, &offset, nullptr) || item != kIndexedTableItem)
            return;
        const int index = offset.v / kCellPitch * kCellsInRow + offset.h / kCellPitch;
        if (index < g->numColors) ChangeMark(dialog, g, index, marking);
    });
}

void HighlightCLUTSelection(DialogPtr dialog, int index, Boolean erase) {
    const Rect frame = OutsetRect(CellRect(ItemRect(dialog, kIndexedTableItem), index), 1);
    PenPat(erase ? &kWhitePattern : &kBlackPattern);
    FrameRect(&frame);
}

namespace {

void DrawUsedCell(const Rect& cell, RGBtuple color) {
    FillWithColor(cell, WidenToWords(color));
    PenNormal();
    FrameRect(&cell);
}

void DrawUnusedCell(const Rect& cell) {
    const auto bottom = static_cast<short>(cell.bottom - 1);
    const auto right = static_cast<short>(cell.right - 1);
    FillRect(&cell, &kWhitePattern);
    FrameRect(&cell);
    MoveTo(cell.left, cell.top);
    LineTo(right, bottom);
    MoveTo(cell.left, bottom);
    LineTo(right, cell.top);
}

} // namespace

void DrawCLUT(DialogPtr dialog, const RGBLookUpTable* palette, int count, int selected,
              short item) {
    const UsualPen pen;
    const Rect table = ItemRect(dialog, item);
    EraseRect(&table);
    for (int i = 0; i < kCells; ++i) {
        const Rect cell = CellRect(table, i);
        if (i >= count) {
            DrawUnusedCell(cell);
            continue;
        }
        DrawUsedCell(cell, TableEntry(*palette, i));
        if (i != selected) continue;
        const Rect frame = OutsetRect(cell, 2);
        FrameRect(&frame);
    }
}

void DrawIndexedCLUT(DialogPtr dialog, short item) {
    const IndexedDialogGlobals* const g = GlobalsOf(dialog);
    DrawCLUT(dialog, g->palette, g->numColors, -1, item);
    const UsualPen pen;
    for (int i = 0; i < g->numColors; ++i)
        if (g->transMap[i] != 0) HighlightCLUTSelection(dialog, i, g->maskedData != nullptr);
}

void DrawColorBoxIndex(DialogPtr dialog, short item, IndexedDialogGlobals* g) {
    const UsualPen pen;
    const Rect box = ItemRect(dialog, item);
    if (!g->maskedData && !IsThereAnyTransparency(g->transMap))
        FillRect(&box, &kGrayPattern);
    else
        FillWithColor(box, WidenColor(g->transparentColor));
    FrameRect(&box);
}

void DrawColorBox(DialogPtr dialog, short item) {
    DrawColorBoxIndex(dialog, item, GlobalsOf(dialog));
}

Boolean ResetAll(DialogPtr dialog, IndexedDialogGlobals* g) {
    g->maskedData = nullptr;
    std::fill(std::begin(g->transMap), std::end(g->transMap), std::uint8_t{0});
    g->transparentColor = kUsualTransparentColor;
    FixupPmTable(g->previewColors, g->transMap, g->palette, g->transparentColor, g->maskIndex,
                 false);
    g->selectedTool = g->currentTool = eyeDropperPlusTool;
    MySetPopUpMenuValue(dialog, kIndexedChannelItem, kNoChannelEntry);
    DisableDialogItem(dialog, kIndexedSwatchItem);
    g->previewDirty = g->needsRedraw = 1;
    return true;
}
