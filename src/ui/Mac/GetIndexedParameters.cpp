#include "GetIndexedParameters.h"

#include "ChannelNames.h"
#include "Cursors.h"
#include "DialogResources.h"
#include "GIF89IndexedExport.h"
#include "IndexedDialog.h"
#include "IndexedFilter.h"
#include "IndexedPreview.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"
#include "LumoGetColor.h"
#include "MemoryManager.h"
#include "MenuManager.h"
#include "ModuleResources.h"
#include "PascalStrings.h"
#include "PreviewTools.h"
#include "ResourceManager.h"
#include "TransparencyMap.h"

#include <algorithm>
#include <new>
#include <string>

namespace {

constexpr short kNoDialog = -1; // the code of a dialog that cannot be had
constexpr int kMostShrink = 16;
constexpr int kPreviewSlack = 16; // what the visible part may run over the box

void InstallDrawProcedures(DialogPtr dialog) {
    constexpr struct {
        short item;
        UserItemProc draw;
    } kProcedures[] = {
        {kIndexedPreviewItem, DrawImageBox},       {kIndexedTableItem, DrawIndexedCLUT},
        {kIndexedSwatchItem, DrawColorBox},        {kIndexedHandItem, DrawIndexedToolItem},
        {kIndexedZoomItem, DrawIndexedToolItem},   {kIndexedDropperItem, DrawIndexedToolItem},
        {kIndexedToolFrameItem, DrawToolBoxFrame}, {kIndexedZoomFrameItem, DrawToolBoxFrame},
        {kIndexedHintItem, DrawSmallText},         {kIndexedCountItem, DrawSmallText},
    };
    for (const auto& [item, draw] : kProcedures) {
        short kind = 0;
        Handle handle = nullptr;
        Rect rect;
        GetDialogItem(dialog, item, &kind, &handle, &rect);
        SetDialogItem(dialog, item, kind, ProcToHandle(draw), &rect);
    }
}

/// What the dialog shows at first of a picture: as much as fits in the box at the smallest scale.
void ChooseZoom(IndexedDialogGlobals* g, const Rect& box) {
    const int height = box.bottom - box.top, width = box.right - box.left;
    const int rows = g->imageSize.v, columns = g->imageSize.h;
    const int shrink = std::max({(columns + width - 1) / width, (rows + height - 1) / height, 1});
    g->enlarge = g->shrink = 1;
    g->maxShrink = std::min(shrink, kMostShrink);
    // Less than the picture when even the smallest scale does not show it whole.
    g->srcRect = {0, 0, static_cast<std::int16_t>(std::min(rows, g->maxShrink * height)),
                  static_cast<std::int16_t>(std::min(columns, g->maxShrink * width))};
}

CTabHandle NewPreviewColors() {
    auto* const colors = reinterpret_cast<CTabHandle>(NewHandle(sizeof(ColorTable)));
    if (!colors) return nullptr;
    new (*colors) ColorTable{};
    (*colors)->ctSize = 255;
    for (std::int16_t i = 0; i < 256; ++i) (*colors)->ctTable[i].value = i;
    return colors;
}

/// The blocks of the preview, freed at its end.
class PreviewMemory {
  public:
    explicit PreviewMemory(IndexedDialogGlobals* globals) : g(globals) {}
    PreviewMemory(const PreviewMemory&) = delete;
    PreviewMemory& operator=(const PreviewMemory&) = delete;
    ~PreviewMemory() {
        DisposePtr(g->previewBuffer);
        DisposeHandle(reinterpret_cast<Handle>(g->previewColors));
    }

    /// Makes them for a preview box; false without memory.
    bool Allocate(const Rect& box) {
        const int rowBytes = (box.right - box.left + kPreviewSlack + 3) / 4 * 4;
        g->previewBuffer = NewPtr(Size{box.bottom - box.top + kPreviewSlack} * rowBytes);
        g->previewColors = NewPreviewColors();
        return g->previewBuffer && g->previewColors;
    }

  private:
    IndexedDialogGlobals* g;
};

/// Shows the transparency as it is chosen now.
void FixupPreview(IndexedDialogGlobals* g) {
    FixupPmTable(g->previewColors, g->transMap, g->palette, g->transparentColor, g->maskIndex,
                 g->maskedData != nullptr);
}

void FillGlobals(GIF89IndexedExport& context, IndexedDialogGlobals* g) {
    g->exportRecord = context.exportRecord;
    g->palette = &context.palette;
    g->numColors = context.numColors;
    g->imageData = context.gifBuffer;
    g->maskedData = context.alphaData;
    g->maskedRowBytes = context.alphaRowBytes;
    g->rowBytes = context.gifRowBytes;
    g->imageSize = {context.shape.rows, context.shape.columns};
}

/// The host's name of a channel, or its number where the host knows none.
std::string NameChannel(short channel, ExportRecord* record) {
    char name[kChannelNameBytes];
    if (GetChannelName(channel, name, record) == noErr && name[0] != '\0') return name;
    Str255 text;
    GetIndString(text, kDialogStrings, kChannelString);
    return FromPascal(text) + std::to_string(channel);
}

void ListChannels(DialogPtr dialog, const GIF89IndexedExport& context) {
    const short planes = context.shape.planes;
    EnableDisableDialogItem(dialog, kIndexedChannelItem, planes >= 2);
    const MenuHandle menu = GetPopupItemMenuHandle(dialog, kIndexedChannelItem);
    for (short channel = 1; channel < planes; ++channel) {
        Str255 name;
        ToPascal(NameChannel(channel, context.exportRecord), name);
        InsertMenuItem(menu, name, static_cast<short>(channel + 1)); // behind all others
    }
}

/// Sets every item as it is when the dialog comes up.
void PrepareItems(DialogPtr dialog, GIF89IndexedExport& context, IndexedDialogGlobals* g) {
    const Rect box = ItemRect(dialog, kIndexedPreviewItem);
    ChooseZoom(g, box);
    CalculateViewRects(&g->srcRect, &g->dstRect, &box, g->shrink, g->enlarge, &g->imageSize,
                       nullptr);
    SetZoomFactor(dialog, g->enlarge, g->shrink, kIndexedZoomTextItem);

    const bool hasComment = context.comment != nullptr;
    context.interlaced = 1;
    SetCheckBoxState(dialog, kIndexedInterlaceItem, true);
    SetCheckBoxState(dialog, kIndexedCommentItem, hasComment);
    EnableDisableDialogItem(dialog, kIndexedCommentItem, hasComment);
    ListChannels(dialog, context);
}

// Hits

void PickTransparentColor(DialogPtr dialog, IndexedDialogGlobals* g) {
    const CursHandle watch = GetCursor(kWatchCursor);
    if (watch) SetCursor(*watch);
    Str255 prompt;
    GetIndString(prompt, kSharedStrings, kColorPromptString);
    RGBColor color = WidenColor(g->transparentColor);
    {
        const PickerRefCon refCon(dialog, {g, DialogFilter, g->exportRecord->eventProc.Get()});
        LumoGetColor(g->exportRecord->colorServicesProc.Get(), Point{}, prompt, &color, &color);
    }
    // A picker that chose nothing has left the colour as it was.
    const auto highByte = [](std::uint16_t level) { return static_cast<std::uint8_t>(level >> 8); };
    g->transparentColor = {0, highByte(color.red), highByte(color.green), highByte(color.blue)};
    g->needsRedraw = 1;
    FixupPreview(g);
}

/// Back to the marks; false when no channel is in force.
bool LeaveChannel(DialogPtr dialog, IndexedDialogGlobals* g) {
    if (!g->maskedData) return false;
    if (!IsThereAnyTransparency(g->transMap)) DisableDialogItem(dialog, kIndexedSwatchItem);
    g->maskedData = nullptr;
    return true;
}

/// Takes the transparency from a channel, inverted or not; false when it is taken from there
/// already.
bool TakeChannel(DialogPtr dialog, GIF89IndexedExport& context, IndexedDialogGlobals* g,
                 short channel, bool invert) {
    const bool isMade = channel == context.alphaPlane && invert == (g->maskInverted != 0);
    if (isMade && g->maskedData) return false;
    if (isMade || context.GetMaskFromAlphaChannel(channel, invert, &g->maskIndex) == noErr) {
        g->maskInverted = invert;
        g->maskedData = context.alphaData;
        g->maskedRowBytes = context.alphaRowBytes;
    }
    // Also when the host could not deliver: the choice was made, and the hand harms nothing.
    g->selectedTool = handTool;
    EnableDialogItem(dialog, kIndexedSwatchItem);
    return true;
}

void ChooseChannel(DialogPtr dialog, GIF89IndexedExport& context, IndexedDialogGlobals* g) {
    const bool option = IsThisKeyDown(kKeyOption) != 0;
    const short entry = GetPopUpMenuValue(dialog, kIndexedChannelItem);
    const auto channel = static_cast<short>(entry - 1);
    const bool changes = entry == kNoChannelEntry
                             ? LeaveChannel(dialog, g)
                             : TakeChannel(dialog, context, g, channel, option);
    if (!changes) return;
    FixupPreview(g);
    g->previewDirty = 1;
    g->needsRedraw = 1;
}

void TakeChoicesOver(DialogPtr dialog, GIF89IndexedExport& context, IndexedDialogGlobals* g) {
    context.transIndex = PrepareGIFBuffer(g);
    context.interlaced = GetCheckBoxState(dialog, kIndexedInterlaceItem);
    context.commentEnabled = GetCheckBoxState(dialog, kIndexedCommentItem);
}

/// Serves hits until OK or Cancel; noErr or userCanceledErr.
short RunDialog(DialogPtr dialog, GIF89IndexedExport& context, IndexedDialogGlobals* g) {
    for (;;) {
        short item = 0;
        MoveableModalDialog(dialog, context.exportRecord->eventProc.Get(), DialogFilter, &item);
        switch (item) {
        case kOKItem:
            TakeChoicesOver(dialog, context, g);
            return noErr;
        case kCancelItem:
            if (!IsThisKeyDown(kKeyOption)) return userCanceledErr;
            ResetAll(dialog, g);
            break;
        case kIndexedInterlaceItem:
        case kIndexedCommentItem:
            SetCheckBoxState(dialog, item, !GetCheckBoxState(dialog, item));
            break;
        case kIndexedSwatchItem:
            PickTransparentColor(dialog, g);
            break;
        case kIndexedChannelItem:
            ChooseChannel(dialog, context, g);
            break;
        default:
            break;
        }
    }
}

/// Readies the dialog, shows it, and serves it to its end.
short ShowDialog(DialogPtr dialog, GIF89IndexedExport& context, IndexedDialogGlobals* g) {
    SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(g));
    InstallDrawProcedures(dialog);
    SetDialogDefaultItem(dialog, kOKItem);
    SetDialogCancelItem(dialog, kCancelItem);
    SetDialogTracksCursor(dialog, true);
    FillGlobals(context, g);
    FixupPreview(g);
    PrepareItems(dialog, context, g);
    SetArrowCursor();
    ShowWindow(dialog);
    return RunDialog(dialog, context, g);
}

} // namespace

short GetIndexedParameters(GIF89IndexedExport& context) {
    const Handle resource = GetResource(FourCC("DLOG"), kIndexedDialog);
    if (!resource) return kNoDialog;
    HNoPurge(resource);
    CenterDialog(resource);
    short code = kNoDialog;
    IndexedDialogGlobals g;
    PreviewMemory memory(&g);
    if (const DialogPtr dialog = GetNewDialog(kIndexedDialog, nullptr, nullptr)) {
        const bool canPreview = memory.Allocate(ItemRect(dialog, kIndexedPreviewItem));
        code = canPreview ? ShowDialog(dialog, context, &g) : short{memFullErr};
        DisposeDialog(dialog);
    }
    HPurge(resource);
    return code;
}
