#include "GetIndexedParameters.h"

#include "ChannelNames.h"
#include "Cursors.h"
#include "GIF89IndexedExport.h"
#include "IndexedDialog.h"
#include "IndexedFilter.h"
#include "IndexedPreview.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"
#include "LumoGetColor.h"
#include "MenuManager.h"
#include "ModuleResources.h"
#include "PascalStrings.h"
#include "PreviewDialog.h"
#include "PreviewTools.h"
#include "ResourceManager.h"
#include "TransparencyMap.h"

#include <string>

namespace {

constexpr DrawnItem kDrawnItems[] = {
    {kIndexedPreviewItem, DrawImageBox},       {kIndexedTableItem, DrawIndexedCLUT},
    {kIndexedSwatchItem, DrawColorBox},        {kIndexedHandItem, DrawToolButton},
    {kIndexedZoomItem, DrawToolButton},        {kIndexedDropperItem, DrawToolButton},
    {kIndexedToolFrameItem, DrawToolBoxFrame}, {kIndexedZoomFrameItem, DrawToolBoxFrame},
    {kIndexedHintItem, DrawSmallText},         {kIndexedCountItem, DrawSmallText},
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
    OpenView(dialog, g);
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
    g->transparentColor = TakeHighBytes(color);
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

/// Fills the dialog, shows it, and serves it to its end.
short ShowDialog(DialogPtr dialog, GIF89IndexedExport& context, IndexedDialogGlobals* g) {
    FillGlobals(context, g);
    FixupPreview(g);
    PrepareItems(dialog, context, g);
    SetArrowCursor();
    ShowWindow(dialog);
    return RunDialog(dialog, context, g);
}

} // namespace

short GetIndexedParameters(GIF89IndexedExport& context) {
    IndexedDialogGlobals g;
    return RunPreviewDialog({kIndexedDialog, kCancelItem, kDrawnItems}, &g,
                            [&](DialogPtr dialog) { return ShowDialog(dialog, context, &g); });
}
