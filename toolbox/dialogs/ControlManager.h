// Buttons, check boxes and pop-ups as records; a display shows them in native widgets.
#pragma once

#include "ToolboxTypes.h"

/// Highlight states of a control.
constexpr std::int16_t kControlActive = 0;
constexpr std::int16_t kControlInactive = 255;

struct ControlRecord {
    struct DialogRecord* contrlOwner;
    Rect contrlRect;
    std::int16_t contrlValue;
    std::int16_t contrlMin;
    std::int16_t contrlMax;
    std::int16_t contrlHilite; ///< a part code; kControlInactive cannot be pressed
    Handle contrlData;         ///< pop-ups: a block that begins with the MenuHandle; else null
    Str255 contrlTitle;
    std::int16_t item; ///< number in the dialog
};
using ControlHandle = ControlRecord**;

/// Every call takes a null control: reading gives 0 or an empty title, writing does nothing.
short GetControlValue(ControlHandle control);
/// The value is brought between minimum and maximum.
void SetControlValue(ControlHandle control, short value);
short GetControlMinimum(ControlHandle control);
short GetControlMaximum(ControlHandle control);
void SetControlMaximum(ControlHandle control, short maximum);
void GetControlTitle(ControlHandle control, StringPtr title);
void SetControlTitle(ControlHandle control, ConstStr255Param title);
void HiliteControl(ControlHandle control, short state);

// Older names
inline short GetCtlValue(ControlHandle control) {
    return GetControlValue(control);
}
inline void SetCtlValue(ControlHandle control, short value) {
    SetControlValue(control, value);
}
inline short GetCtlMin(ControlHandle control) {
    return GetControlMinimum(control);
}
inline short GetCtlMax(ControlHandle control) {
    return GetControlMaximum(control);
}
inline void SetCtlMax(ControlHandle control, short maximum) {
    SetControlMaximum(control, maximum);
}
inline void GetCTitle(ControlHandle control, StringPtr title) {
    GetControlTitle(control, title);
}
inline void SetCTitle(ControlHandle control, ConstStr255Param title) {
    SetControlTitle(control, title);
}
