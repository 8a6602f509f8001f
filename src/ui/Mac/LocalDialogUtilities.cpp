#include "LocalDialogUtilities.h"

#include "ControlManager.h"
#include "MenuManager.h"

#include <cstring>

namespace {

struct ItemInfo {
    short kind;
    Handle handle;
    Rect rect;
};

ItemInfo ReadItem(DialogPtr dialog, short item) {
    ItemInfo info = {};
    GetDItem(dialog, item, &info.kind, &info.handle, &info.rect);
    return info;
}

void WriteKind(DialogPtr dialog, short item, const ItemInfo& info, int kind) {
    SetDItem(dialog, item, static_cast<short>(kind), info.handle, &info.rect);
    InvalItem(dialog, item);
}

/// Kinds 4 to 7 are controls.
bool IsControlKind(short kind) {
    return (kind & ~kItemDisabled) >= kButtonItem &&
           (kind & ~kItemDisabled) <= kResourceControlItem;
}

} // namespace

// Deliberate: the two tests are no mirror images. Only an enabled push button is disabled by the
// control call, and only one marked disabled is enabled by it; a push button that is in the wanted
// state already goes through its kind and is drawn anew like any other item.
void DisableDialogItem(DialogPtr dialog, short item) {
    const ItemInfo info = ReadItem(dialog, item);
    if (info.kind == kButtonItem) {
        DisableControl(dialog, item);
        return;
    }
    WriteKind(dialog, item, info, info.kind | kItemDisabled);
}

void EnableDialogItem(DialogPtr dialog, short item) {
    const ItemInfo info = ReadItem(dialog, item);
    if (info.kind == (kButtonItem | kItemDisabled)) {
        EnableControl(dialog, item);
        return;
    }
    WriteKind(dialog, item, info, info.kind & ~kItemDisabled);
}

void EnableDisableDialogItem(DialogPtr dialog, short item, Boolean enable) {
    if (enable != 0)
        EnableDialogItem(dialog, item);
    else
        DisableDialogItem(dialog, item);
}

ControlHandle ItemToControl(DialogPtr dialog, short item) {
    short kind = 0;
    Handle handle = nullptr;
    Rect rect;
    GetDialogItem(dialog, item, &kind, &handle, &rect);
    return reinterpret_cast<ControlHandle>(handle);
}

short GetItemValue(DialogPtr dialog, short item) {
    return GetControlValue(ItemToControl(dialog, item));
}

void SetItemValue(DialogPtr dialog, short item, short value) {
    SetControlValue(ItemToControl(dialog, item), value);
}

void SetItemHilite(DialogPtr dialog, short item, short state) {
    HiliteControl(ItemToControl(dialog, item), state);
}

MenuHandle GetPopupItemMenuHandle(DialogPtr dialog, short item) {
    const ItemInfo info = ReadItem(dialog, item);
    // A user item's handle is its draw procedure.
    if (info.handle == nullptr || !IsControlKind(info.kind)) return nullptr;
    const Handle data = (*reinterpret_cast<ControlHandle>(info.handle))->contrlData;
    if (data == nullptr) return nullptr;
    MenuHandle menu = nullptr;
    std::memcpy(&menu, *data, sizeof menu);
    return menu;
}

void EnablePopupMenuItem(DialogPtr dialog, short item, short entry) {
    EnableItem(GetPopupItemMenuHandle(dialog, item), entry);
}

void DisablePopupMenuItem(DialogPtr dialog, short item, short entry) {
    DisableItem(GetPopupItemMenuHandle(dialog, item), entry);
}

void MySetPopUpMenuValue(DialogPtr dialog, short item, short value) {
    auto* const control = reinterpret_cast<ControlHandle>(ReadItem(dialog, item).handle);
    if (GetCtlValue(control) == value) return;
    if (GetCtlMax(control) < value) SetCtlMax(control, value);
    SetCtlValue(control, value);
}

Boolean DialogItemPoint(const Point* global, DialogPtr dialog, short* item, Point* offset,
                        Rect* rect) {
    WindowPtr window = nullptr;
    if (FindWindow(*global, &window) != inContent || window != dialog) return false;

    GrafPtr savedPort = nullptr;
    GetPort(&savedPort);
    SetPort(dialog);
    Point local = *global;
    GlobalToLocal(&local);
    SetPort(savedPort);

    const short found = static_cast<short>(FindDialogItem(dialog, local) + 1);
    if (found < 1) return false;
    *item = found;
    const Rect itemRect = ReadItem(dialog, found).rect;
    if (offset != nullptr)
        *offset = {static_cast<short>(local.v - itemRect.top),
                   static_cast<short>(local.h - itemRect.left)};
    if (rect != nullptr) *rect = itemRect;
    return true;
}
