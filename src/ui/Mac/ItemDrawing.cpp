#include "ItemDrawing.h"

#include "ControlManager.h"
#include "LocalDialogUtilities.h"
#include "ModuleResources.h"
#include "PascalStrings.h"
#include "ResourceManager.h"

Rect ItemRect(DialogPtr dialog, short item) {
    short kind = 0;
    Handle handle = nullptr;
    Rect rect;
    GetDialogItem(dialog, item, &kind, &handle, &rect);
    return rect;
}

void SetDrawProcedure(DialogPtr dialog, short item, UserItemProc draw) {
    short kind = 0;
    Handle handle = nullptr;
    Rect rect;
    GetDialogItem(dialog, item, &kind, &handle, &rect);
    SetDialogItem(dialog, item, kind, ProcToHandle(draw), &rect);
}

void ShowCancelTitle(DialogPtr dialog, bool optionDown) {
    Str255 wanted, shown;
    GetIndString(wanted, kDialogStrings, optionDown ? kResetString : kCancelString);
    const ControlHandle button = ItemToControl(dialog, kCancelItem);
    GetControlTitle(button, shown);
    if (FromPascal(shown) != FromPascal(wanted)) SetControlTitle(button, wanted);
}

Rect OutsetRect(Rect rect, short distance) {
    const auto inward = static_cast<short>(-distance);
    InsetRect(&rect, inward, inward);
    return rect;
}

void FillWithColor(const Rect& rect, const RGBColor& color) {
    const PixPatHandle pattern = NewPixPat();
    if (!pattern) return;
    MakeRGBPat(pattern, &color);
    PenPixPat(pattern);
    FillCRect(&rect, pattern);
    DisposePixPat(pattern); // the pen's plain pattern counts again
}
