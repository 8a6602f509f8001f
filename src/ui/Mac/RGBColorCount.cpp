#include "RGBColorCount.h"

#include "HostDialogs.h"
#include "LocalDialogUtilities.h"
#include "MenuManager.h"
#include "ModuleResources.h"
#include "ResourceManager.h"

namespace {

constexpr std::int32_t kFewestColors = 2, kMostColors = 256;

/// What a picture starts with: an entry of the pop-up and a text.
struct UsualCount {
    short entry;
    short text;
};
constexpr UsualCount kUsualCount = {7, 7}, kUsualCountBesideTransparency = {6, 6};
constexpr short kMostColorsEntry = 7;
constexpr short kTypedCountEntry = 1; // and a line behind it, above the resource's entries
constexpr short kNoEntry = 0;

// Where an entry of the resource is now.
short PresetEntry(const GIF89RGBExport& context, short entry) {
    return static_cast<short>(context.hasTypedCountEntry ? entry + 2 : entry);
}

std::int32_t EntryCount(MenuHandle menu, short entry) {
    Str255 text;
    GetMenuItemText(menu, entry, text);
    std::int32_t count = 0;
    StringToNumber(text, &count);
    return count;
}

// kNoEntry when no entry is that count.
short FindEntryOf(MenuHandle menu, std::int32_t count) {
    const short entries = CountMenuItems(menu);
    for (short entry = 1; entry <= entries; ++entry)
        if (EntryCount(menu, entry) == count) return entry;
    return kNoEntry;
}

void InsertTypedCountEntry(MenuHandle menu, GIF89RGBExport* context) {
    if (context->hasTypedCountEntry) return;
    InsertMenuItem(menu, reinterpret_cast<ConstStr255Param>("\2(-"), 0);
    InsertMenuItem(menu, reinterpret_cast<ConstStr255Param>("\1 "), 0);
    context->hasTypedCountEntry = 1;
}

void ChooseCountEntry(DialogPtr dialog, GIF89RGBExport* context, std::int32_t count) {
    const MenuHandle menu = GetPopupItemMenuHandle(dialog, kRGBCountPopUpItem);
    short entry = FindEntryOf(menu, count);
    if (entry == kNoEntry) {
        InsertTypedCountEntry(menu, context);
        Str255 text;
        NumberToString(count, text);
        entry = kTypedCountEntry;
        SetMenuItemText(menu, entry, text);
    }
    MySetPopUpMenuValue(dialog, kRGBCountPopUpItem, entry);
}

} // namespace

std::int32_t LargestColorCount(const GIF89RGBExport& context) {
    return context.shape.hasTransparency ? kMostColors - 1 : kMostColors;
}

void SetColorDepthText(DialogPtr dialog, GIF89RGBExport* context, std::int32_t count) {
    if (count == kTypedCount) {
        Str255 text;
        FetchText(dialog, kRGBCountItem, text);
        StringToNumber(text, &count);
    } else {
        StuffNumber(dialog, kRGBCountItem, count);
    }
    if (count >= kFewestColors && count <= LargestColorCount(*context))
        ChooseCountEntry(dialog, context, count);
    else
        MySetPopUpMenuValue(dialog, kRGBCountPopUpItem, kNoEntry);
}

void ShowUsualCount(DialogPtr dialog, const GIF89RGBExport& context) {
    const UsualCount usual =
        context.shape.hasTransparency ? kUsualCountBesideTransparency : kUsualCount;
    MySetPopUpMenuValue(dialog, kRGBCountPopUpItem, PresetEntry(context, usual.entry));
    Str255 text;
    GetIndString(text, kCountStrings, usual.text);
    StuffText(dialog, kRGBCountItem, text);
}

void LimitPresets(DialogPtr dialog, const GIF89RGBExport& context) {
    const short entry = PresetEntry(context, kMostColorsEntry);
    if (context.shape.hasTransparency)
        DisablePopupMenuItem(dialog, kRGBCountPopUpItem, entry);
    else
        EnablePopupMenuItem(dialog, kRGBCountPopUpItem, entry);
}

void TakePreset(DialogPtr dialog) {
    Str255 text;
    GetMenuItemText(GetPopupItemMenuHandle(dialog, kRGBCountPopUpItem),
                    GetPopUpMenuValue(dialog, kRGBCountPopUpItem), text);
    StuffText(dialog, kRGBCountItem, text);
    SelectTextItem(dialog, kRGBCountItem);
}

void EnableCountControls(DialogPtr dialog, bool enable) {
    EnableDisableDialogItem(dialog, kRGBCountPopUpItem, enable);
    if (enable) {
        UnGrayText(dialog, kRGBCountLabelItem);
        EnableColorDepthText(dialog);
    } else {
        GrayText(dialog, kRGBCountLabelItem);
        DisableColorDepthText(dialog);
    }
}

void EnableColorDepthText(DialogPtr dialog) {
    EnableDialogItem(dialog, kRGBCountItem);
    TEActivate(GetDialogTextEditHandle(dialog));
}

void DisableColorDepthText(DialogPtr dialog) {
    DisableDialogItem(dialog, kRGBCountItem);
    TEDeactivate(GetDialogTextEditHandle(dialog));
}

void GrayText(DialogPtr dialog, short item) {
    DisableDialogItem(dialog, item);
    EnableDialogItem(dialog, static_cast<short>(item + 1));
}

void UnGrayText(DialogPtr dialog, short item) {
    EnableDialogItem(dialog, item);
    DisableDialogItem(dialog, static_cast<short>(item + 1));
}
