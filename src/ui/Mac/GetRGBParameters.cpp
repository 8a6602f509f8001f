#include "GetRGBParameters.h"

#include "ControlManager.h"
#include "Cursors.h"
#include "DialogResources.h"
#include "GIF89RGBExport.h"
#include "HostDialogs.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"
#include "LumoGetColor.h"
#include "ModalDialog.h"
#include "ModuleResources.h"
#include "PreviewTools.h"
#include "RGBColorCount.h"
#include "RGBPaletteMenu.h"
#include "RGBPreview.h"
#include "ResourceManager.h"

#include <algorithm>
#include <cstring>
#include <mutex>

namespace {

constexpr OSErr kNoDialog = -1;
constexpr std::uint16_t kUsualColorLevel = 49344; // 192 of 255
constexpr std::int32_t kFewestColors = 2, kMostColors = 256;

GIF89RGBExport* ContextOf(DialogPtr dialog) {
    return reinterpret_cast<GIF89RGBExport*>(GetMoveableWRefCon(dialog));
}

bool IsItemDisabled(DialogPtr dialog, short item) {
    short kind = 0;
    Handle handle = nullptr;
    Rect rect;
    GetDialogItem(dialog, item, &kind, &handle, &rect);
    return (kind & kItemDisabled) != 0;
}

bool CanBeExact(const GIF89RGBExport& context) {
    const std::int32_t count = context.exactInfo.count;
    return count >= 0 && !(context.shape.hasTransparency && count >= kMostColors);
}

// The colour of transparent pixels, or gray where there are none.
void DrawColorBox(DialogPtr dialog, short item) {
    const UsualPen pen;
    const Rect rect = ItemRect(dialog, item);
    if (IsItemDisabled(dialog, item))
        FillRect(&rect, &kGrayPattern);
    else
        FillWithColor(rect, ContextOf(dialog)->chosenColor);
    PenNormal();
    FrameRect(&rect);
}

void FollowTransparency(DialogPtr dialog, const GIF89RGBExport& context) {
    if (context.shape.hasTransparency) {
        EnableDialogItem(dialog, kRGBColorBoxItem);
        UnGrayText(dialog, kRGBColorLabelItem);
    } else {
        DisableDialogItem(dialog, kRGBColorBoxItem);
        GrayText(dialog, kRGBColorLabelItem);
    }
    LimitPresets(dialog, context);
}

void ResetPalette(DialogPtr dialog, GIF89RGBExport* context) {
    SetCheckBoxState(dialog, kRGBResizeItem, false);
    if (CanBeExact(*context)) {
        ShowPaletteEntry(dialog, context, kExactEntry);
        return;
    }
    DisablePopupMenuItem(dialog, kRGBPalettePopUpItem, kExactEntry);
    ShowPaletteEntry(dialog, context, kAdaptiveEntry);
    ShowUsualCount(dialog, *context);
}

void RGBResetAll(DialogPtr dialog, GIF89RGBExport* context) {
    FollowTransparency(dialog, *context);
    ResetPalette(dialog, context);
    SetCheckBoxState(dialog, kRGBInterlaceItem, true);
    SetCheckBoxState(dialog, kRGBCommentItem, context->comment != nullptr);
    EnableDisableDialogItem(dialog, kRGBCommentItem, context->comment != nullptr);
    context->chosenColor = {kUsualColorLevel, kUsualColorLevel, kUsualColorLevel};
    InvalItem(dialog, kRGBColorBoxItem);
}

bool EndsDialog(const EventRecord& event) {
    const int key = event.message >> 8 & 0xFF, character = event.message & 0xFF;
    return key == kKeyReturn || key == kKeyEnter || key == kKeyEscape ||
           (character == '.' && (event.modifiers & cmdKey) != 0);
}

bool IsMeantForCount(DialogPtr dialog, const EventRecord& event) {
    if (event.what == keyDown || event.what == autoKey) return !EndsDialog(event);
    short item = 0;
    return event.what == mouseDown &&
           DialogItemPoint(&event.where, dialog, &item, nullptr, nullptr) && item == kRGBCountItem;
}

// Keeps presses and keys from a disabled count; they are reported as if they had changed it, so
// that the pop-up beside it shows what the text says.
Boolean DialogFilter(DialogPtr dialog, EventRecord* event, short* item) {
    if (event->what == nullEvent) ShowCancelTitle(dialog, IsThisKeyDown(kKeyOption));
    if (!IsItemDisabled(dialog, kRGBCountItem)) return false;
    TEDeactivate(GetDialogTextEditHandle(dialog));
    if (!IsMeantForCount(dialog, *event)) return false;
    *item = kRGBCountItem;
    return true;
}

/// Which palette to build, as SetupPalette takes it.
struct PaletteFlags {
    unsigned char exact = 0;
    unsigned char supplied = 0;
};

// Whether the choice leads to a palette; sets `numColors` and what belongs to the palette.
bool TakePalette(DialogPtr dialog, GIF89RGBExport* context, PaletteFlags* flags) {
    const short entry = GetPopUpMenuValue(dialog, kRGBPalettePopUpItem);
    std::int32_t count = 0;
    if (!FetchNumber(dialog, kRGBCountItem, kFewestColors, LargestColorCount(*context), &count))
        return false;
    if (entry == kFixedEntry && !LoadFixedPalette(context)) return false;
    flags->exact = entry == kExactEntry;
    flags->supplied = entry != kExactEntry && entry != kAdaptiveEntry;
    context->numColors = flags->exact ? context->exactInfo.count : count;
    context->suppliedPaletteFlag = 0;
    const Boolean mayResize = flags->supplied && GetCheckBoxState(dialog, kRGBResizeItem);
    std::memcpy(&context->suppliedPaletteFlag, &mayResize, 1);
    return true;
}

bool TakeChoices(DialogPtr dialog, GIF89RGBExport* context, PaletteFlags* flags) {
    if (!TakePalette(dialog, context, flags)) return false;
    context->interlaced = GetCheckBoxState(dialog, kRGBInterlaceItem);
    context->commentEnabled = GetCheckBoxState(dialog, kRGBCommentItem);
    context->transparentColor = TakeHighBytes(context->chosenColor);
    return true;
}

void ShowPreview(GIF89RGBExport* context, PaletteFlags flags) {
    if (const CursHandle watch = GetCursor(kWatchCursor)) SetCursor(*watch);
    const RGBLookUpTable palette = context->palette;
    const std::int32_t numColors = context->numColors;
    const std::int16_t transIndex = context->transIndex;
    DoPreview(*context, flags.exact, flags.supplied);
    context->palette = palette;
    context->numColors = numColors;
    context->transIndex = transIndex;
    SetArrowCursor();
}

void PickTransparentColor(DialogPtr dialog, GIF89RGBExport* context) {
    Str255 prompt;
    GetIndString(prompt, kSharedStrings, kColorPromptString);
    RGBColor picked = context->chosenColor;
    if (!LumoGetColor(context->exportRecord->colorServicesProc.Get(), Point(), prompt,
                      &context->chosenColor, &picked))
        return;
    context->chosenColor = picked;
    InvalItem(dialog, kRGBColorBoxItem);
}

// Items that only change what the dialog shows.
void ServeItem(DialogPtr dialog, GIF89RGBExport* context, short item) {
    switch (item) {
    case kRGBLoadItem:
        return PickPaletteFile(dialog, context);
    case kRGBColorBoxItem:
        return PickTransparentColor(dialog, context);
    case kRGBPalettePopUpItem:
        return ServePalettePopUp(dialog, context);
    case kRGBCountLabelItem:
        return SelectTextItem(dialog, kRGBCountItem);
    case kRGBCountItem:
        return SetColorDepthText(dialog, context, kTypedCount);
    case kRGBCountPopUpItem:
        return TakePreset(dialog);
    case kRGBInterlaceItem:
    case kRGBCommentItem:
    case kRGBResizeItem:
        return SetCheckBoxState(dialog, item, !GetCheckBoxState(dialog, item));
    default:
        return;
    }
}

short RunDialog(DialogPtr dialog, GIF89RGBExport* context, PaletteFlags* flags) {
    for (;;) {
        short item = 0;
        MoveableModalDialog(dialog, context->exportRecord->eventProc.Get(), DialogFilter, &item);
        switch (item) {
        case kOKItem:
            if (TakeChoices(dialog, context, flags)) return noErr;
            break;
        case kRGBPreviewItem:
            if (TakeChoices(dialog, context, flags)) ShowPreview(context, *flags);
            break;
        case kCancelItem:
            if (!IsThisKeyDown(kKeyOption)) return userCanceledErr;
            RGBResetAll(dialog, context);
            break;
        default:
            ServeItem(dialog, context, item);
        }
    }
}

/// The item colours, where there are any: without transparency the label of the colour box is shown
/// in the one style that the resource holds. The resource stays in memory from one dialog to the
/// next and serves every thread, so the last dialog that is open puts its entry back.
class ItemColors {
  public:
    explicit ItemColors(const GIF89RGBExport& context)
        : resource(GetResource(FourCC("ictb"), kRGBDialog)) {
        if (!resource || GetHandleSize(resource) < kEntryBytes * kRGBColorLabelItem) return;
        entry = *resource + kEntryBytes * (kRGBColorLabelItem - 1);
        const std::lock_guard guard(ResourceBytesLock());
        if (openDialogs++ == 0) std::copy_n(entry, kEntryBytes, saved);
        if (!context.shape.hasTransparency) PutBE(entry, kStyleEntry);
    }
    ItemColors(const ItemColors&) = delete;
    ItemColors& operator=(const ItemColors&) = delete;
    ~ItemColors() {
        if (entry) PutBack();
        if (resource) ReleaseResource(resource);
    }

  private:
    static constexpr std::ptrdiff_t kEntryBytes = 4;
    static constexpr std::uint32_t kStyleEntry = 0x00080040; // its colour counts; its place

    void PutBack() {
        const std::lock_guard guard(ResourceBytesLock());
        if (--openDialogs == 0) std::copy_n(saved, kEntryBytes, entry);
    }

    static inline int openDialogs = 0;
    static inline std::uint8_t saved[kEntryBytes] = {};
    Handle resource;
    std::uint8_t* entry = nullptr;
};

DialogPtr OpenDialog(GIF89RGBExport* context) {
    const DialogPtr dialog = GetNewDialog(kRGBDialog, nullptr, nullptr);
    if (!dialog) return nullptr;
    SetDialogDefaultItem(dialog, kOKItem);
    SetDialogCancelItem(dialog, kCancelItem);
    SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(context));
    SetDrawProcedure(dialog, kRGBColorBoxItem, DrawColorBox);
    SetOutlineGroup(dialog, kRGBGroupItem);
    return dialog;
}

} // namespace

short GetRGB24Parameters(GIF89RGBExport& context, unsigned char* exact, unsigned char* supplied) {
    *exact = *supplied = 0;
    const Handle resource = GetResource(FourCC("DLOG"), kRGBDialog);
    if (!resource) return kNoDialog;
    HLock(resource);
    const ItemColors itemColors(context);
    CenterDialog(resource);
    const DialogPtr dialog = OpenDialog(&context);
    short code = kNoDialog;
    if (dialog) {
        context.chosenColor = WidenToWords(context.transparentColor);
        context.hasPaletteFileEntry = context.hasTypedCountEntry = 0;
        context.paletteFile = FSSpec();
        RGBResetAll(dialog, &context);
        SetArrowCursor();
        ShowWindow(dialog);
        PaletteFlags flags;
        code = RunDialog(dialog, &context, &flags);
        *exact = flags.exact;
        *supplied = flags.supplied;
        DisposeDialog(dialog);
    }
    HUnlock(resource);
    return code;
}
