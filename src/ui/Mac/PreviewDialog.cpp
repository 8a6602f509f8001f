#include "PreviewDialog.h"

#include "DialogResources.h"
#include "ItemDrawing.h"
#include "MemoryManager.h"
#include "ModalDialog.h"
#include "ModuleResources.h"
#include "PreviewGeometry.h"
#include "PreviewTools.h"
#include "ResourceManager.h"

#include <algorithm>
#include <new>

namespace {

constexpr short kNoDialog = -1;
constexpr int kMostShrink = 16;
constexpr int kBufferSlack = 16; // rows and columns that the visible part may run over its box

Point SizeOf(const Rect& box) {
    return {static_cast<std::int16_t>(box.bottom - box.top),
            static_cast<std::int16_t>(box.right - box.left)};
}

CTabHandle NewPreviewColors() {
    auto* const colors = reinterpret_cast<CTabHandle>(NewHandle(sizeof(ColorTable)));
    if (!colors) return nullptr;
    new (*colors) ColorTable{};
    (*colors)->ctSize = 255;
    for (std::int16_t i = 0; i < 256; ++i) (*colors)->ctTable[i].value = i;
    return colors;
}

/// The blocks of a preview, freed at its end.
class PreviewMemory {
  public:
    PreviewMemory(PreviewView* view, Point box) : g(view) {
        const int rowBytes = (box.h + kBufferSlack + 3) / 4 * 4;
        g->previewBuffer = NewPtr(Size{box.v + kBufferSlack} * rowBytes);
        g->previewColors = NewPreviewColors();
    }
    PreviewMemory(const PreviewMemory&) = delete;
    PreviewMemory& operator=(const PreviewMemory&) = delete;
    ~PreviewMemory() {
        DisposePtr(g->previewBuffer);
        DisposeHandle(reinterpret_cast<Handle>(g->previewColors));
    }
    bool IsThere() const { return g->previewBuffer && g->previewColors; }

  private:
    PreviewView* g;
};

void Prepare(DialogPtr dialog, const PreviewDialog& parts, PreviewView* g) {
    SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(g));
    for (const auto& [item, draw] : parts.drawnItems) SetDrawProcedure(dialog, item, draw);
    SetDialogDefaultItem(dialog, kOKItem);
    SetDialogCancelItem(dialog, parts.cancelItem);
    SetDialogTracksCursor(dialog, true);
}

} // namespace

void FitPreview(PreviewView* g, Point box) {
    const auto shrinkFor = [](int length, int room) { return (length + room - 1) / room; };
    const int shrink =
        std::max({shrinkFor(g->imageSize.v, box.v), shrinkFor(g->imageSize.h, box.h), 1});
    g->maxShrink = std::min(shrink, kMostShrink);
    const auto shown = [](int length, int room) {
        return static_cast<std::int16_t>(std::min(length, room * kMostShrink));
    };
    g->srcRect = {0, 0, shown(g->imageSize.v, box.v), shown(g->imageSize.h, box.h)};
}

void OpenView(DialogPtr dialog, PreviewView* g) {
    const Rect box = ItemRect(dialog, g->items.image);
    FitPreview(g, SizeOf(box));
    CalculateViewRects(&g->srcRect, &g->dstRect, &box, g->shrink, g->enlarge, &g->imageSize,
                       nullptr);
    SetZoomFactor(dialog, g->enlarge, g->shrink, g->items.scale);
}

short RunPreviewDialog(const PreviewDialog& parts, PreviewView* g,
                       const std::function<short(DialogPtr)>& run) {
    const Handle resource = GetResource(FourCC("DLOG"), parts.id);
    if (!resource) return kNoDialog;
    HNoPurge(resource);
    CenterDialog(resource);
    short code = kNoDialog;
    if (const DialogPtr dialog = GetNewDialog(parts.id, nullptr, nullptr)) {
        const PreviewMemory memory(g, SizeOf(ItemRect(dialog, g->items.image)));
        Prepare(dialog, parts, g);
        code = memory.IsThere() ? run(dialog) : short{memFullErr};
        DisposeDialog(dialog);
    }
    HPurge(resource);
    return code;
}
