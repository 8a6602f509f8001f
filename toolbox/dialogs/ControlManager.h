// Buttons, check boxes and pop-ups of dialogs; a display shows them in native widgets.
#pragma once

#include "DialogRecord.h"

#pragma GCC visibility push(default)

/// Every call takes a null control: reading gives 0 or an empty title, writing does nothing.
short GetControlValue(ControlHandle control);
/// The value is brought between minimum and maximum. A pop-up's is the number of the chosen entry,
/// 0 for none.
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
inline short GetCtlMax(ControlHandle control) {
    return GetControlMaximum(control);
}
inline void SetCtlMax(ControlHandle control, short maximum) {
    SetControlMaximum(control, maximum);
}

#pragma GCC visibility pop
