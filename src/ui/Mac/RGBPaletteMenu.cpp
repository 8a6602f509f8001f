#include "RGBPaletteMenu.h"

#include "HostDialogs.h"
#include "LoadColorTable.h"
#include "LocalDialogUtilities.h"
#include "MenuManager.h"
#include "ModuleResources.h"
#include "Notices.h"
#include "RGBColorCount.h"
#include "ResourceManager.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::int32_t kFixedColors = 256;
constexpr std::int32_t kFewestColors = 2;
// The answer of a loader that found no file to open: nothing has changed, and nothing is said.
constexpr std::int32_t kNothingLoaded = -1;

void TellLoadError(OSErr error) {
    constexpr std::uint8_t empty[] = {0};
    Str255 text;
    GetIndString(text, kSharedStrings,
                 error == kColorSpaceNotSupported ? kColorSpaceString : kCannotReadString);
    ParamText(text, empty, empty, empty);
    ShowAlert(kErrorAlert);
}

// The count shown is the palette's own, as far as it can be chosen.
void ShowPaletteCount(DialogPtr dialog, GIF89RGBExport* context, std::int32_t count) {
    SetColorDepthText(dialog, context,
                      std::clamp(count, kFewestColors, LargestColorCount(*context)));
}

bool LoadPaletteFile(GIF89RGBExport* context, const FSSpec& file, OSType type) {
    std::int32_t count = kNothingLoaded;
    const OSErr error = LoadColorTable(&context->palette, &count, &file, type);
    if (error != noErr) TellLoadError(error);
    if (error != noErr || count == kNothingLoaded) return false;
    context->suppliedPaletteCount = count;
    return true;
}

// A file that has gone is left to the loader, which knows what to make of it.
OSType TypeOf(const FSSpec& file) {
    FSSpec found;
    OSType type = 0;
    std::uint16_t flags = 0;
    GetCatInfo(file.vRefNum, file.parID, file.name, &found, &type, &flags);
    return type;
}

bool LoadFileOfEntry(DialogPtr dialog, GIF89RGBExport* context, short entry) {
    if (entry == kPaletteFileEntry && context->hasPaletteFileEntry)
        return LoadPaletteFile(context, context->paletteFile, TypeOf(context->paletteFile));
    Str255 name;
    GetMenuItemText(GetPopupItemMenuHandle(dialog, kRGBPalettePopUpItem), entry, name);
    std::int32_t folder = 0;
    OSErr error = ResolveDirID(&context->paletteFile, &folder);
    FSSpec file;
    OSType type = 0;
    std::uint16_t flags = 0;
    if (error == noErr)
        error = GetCatInfo(context->paletteFile.vRefNum, folder, name, &file, &type, &flags);
    if (error != noErr) {
        TellLoadError(error);
        return false;
    }
    return LoadPaletteFile(context, file, type);
}

void InsertPaletteFileEntry(MenuHandle menu, GIF89RGBExport* context) {
    if (context->hasPaletteFileEntry) return;
    InsertMenuItem(menu, reinterpret_cast<ConstStr255Param>("\2(-"), kPaletteFileEntry - 2);
    InsertMenuItem(menu, reinterpret_cast<ConstStr255Param>("\1 "), kPaletteFileEntry - 1);
    context->hasPaletteFileEntry = 1;
}

// What the rest of the dialog shows for the entry that is now in force.
void FollowPaletteEntry(DialogPtr dialog, GIF89RGBExport* context, short entry) {
    context->paletteChoice = entry;
    EnableDisableDialogItem(dialog, kRGBResizeItem,
                            entry != kExactEntry && entry != kAdaptiveEntry);
    EnableCountControls(dialog, entry != kExactEntry);
    switch (entry) {
    case kExactEntry:
        return SetColorDepthText(dialog, context, context->exactInfo.count);
    case kAdaptiveEntry:
        return; // any count does
    case kFixedEntry:
        return ShowPaletteCount(dialog, context, kFixedColors);
    default:
        return ShowPaletteCount(dialog, context, context->suppliedPaletteCount);
    }
}

} // namespace

void ShowPaletteEntry(DialogPtr dialog, GIF89RGBExport* context, short entry) {
    MySetPopUpMenuValue(dialog, kRGBPalettePopUpItem, entry);
    FollowPaletteEntry(dialog, context, entry);
}

void PickPaletteFile(DialogPtr dialog, GIF89RGBExport* context) {
    FSSpec file;
    OSType type = 0;
    if (!GetColorTableFile(&file, &type) || !LoadPaletteFile(context, file, type)) return;
    context->paletteFile = file;
    const MenuHandle menu = GetPopupItemMenuHandle(dialog, kRGBPalettePopUpItem);
    InsertPaletteFileEntry(menu, context);
    SetMenuItemText(menu, kPaletteFileEntry, file.name);
    ShowPaletteEntry(dialog, context, kPaletteFileEntry);
    SelectTextItem(dialog, kRGBCountItem);
}

void ServePalettePopUp(DialogPtr dialog, GIF89RGBExport* context) {
    const short entry = GetPopUpMenuValue(dialog, kRGBPalettePopUpItem);
    if (entry > kFixedEntry && !LoadFileOfEntry(dialog, context, entry)) {
        MySetPopUpMenuValue(dialog, kRGBPalettePopUpItem, context->paletteChoice);
        return;
    }
    FollowPaletteEntry(dialog, context, entry);
}

bool LoadFixedPalette(GIF89RGBExport* context) {
    const Handle resource = GetResource(FourCC("PLUT"), kFixedPalette);
    if (!resource || GetHandleSize(resource) < static_cast<Size>(sizeof(RGBLookUpTable))) {
        TellLoadError(resNotFound);
        return false;
    }
    std::memcpy(&context->palette, *resource, sizeof(RGBLookUpTable));
    context->suppliedPaletteCount = kFixedColors;
    return true;
}

OSErr ResolveDirID(const FSSpec* file, std::int32_t* folder) {
    CInfoPBRec info;
    info.ioFDirIndex = -1;
    info.ioVRefNum = file->vRefNum;
    info.ioDirID = file->parID;
    const OSErr error = PBGetCatInfoSync(&info);
    if (error == noErr) *folder = info.ioDirID;
    return error;
}

OSErr GetCatInfo(std::int16_t volume, std::int32_t folder, ConstStr255Param name, FSSpec* file,
                 OSType* type, std::uint16_t* flags) {
    if (name[0] >= sizeof(Str63)) return bdNamErr;
    FSSpec found;
    found.vRefNum = volume;
    found.parID = folder;
    std::copy_n(name, name[0] + 1, found.name);
    CInfoPBRec info;
    info.ioNamePtr = found.name;
    info.ioVRefNum = volume;
    info.ioDirID = folder;
    if (const OSErr error = PBGetCatInfoSync(&info)) return error;
    *file = found;
    *type = info.fdType;
    *flags = info.fdFlags;
    return noErr;
}
