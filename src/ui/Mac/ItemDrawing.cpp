#include "ItemDrawing.h"

Rect ItemRect(DialogPtr dialog, short item) {
    short kind = 0;
    Handle handle = nullptr;
    Rect rect;
    GetDialogItem(dialog, item, &kind, &handle, &rect);
    return rect;
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
