#include "ControlManager.h"

#include "EventSource.h"
#include "PascalStrings.h"

#include <algorithm>

namespace {

void TellOwner(const ControlRecord& control, ItemChange change) {
    TellSource(control.contrlOwner, control.item, change);
}

DialogItem& ItemOf(const ControlRecord& control) {
    return *control.contrlOwner->Item(control.item);
}

// Pop-ups whose menu is empty have a maximum below their minimum, which then holds.
short BringIntoRange(const ControlRecord& control, short value) {
    return std::max(control.contrlMin, std::min(control.contrlMax, value));
}

} // namespace

short GetControlValue(ControlHandle control) {
    return control ? (*control)->contrlValue : short{0};
}

void SetControlValue(ControlHandle control, short value) {
    if (!control) return;
    const short inRange = BringIntoRange(**control, value);
    if ((*control)->contrlValue == inRange) return;
    (*control)->contrlValue = inRange;
    TellOwner(**control, ItemChange::value);
}

short GetControlMinimum(ControlHandle control) {
    return control ? (*control)->contrlMin : short{0};
}

short GetControlMaximum(ControlHandle control) {
    return control ? (*control)->contrlMax : short{0};
}

void SetControlMaximum(ControlHandle control, short maximum) {
    if (!control || (*control)->contrlMax == maximum) return;
    (*control)->contrlMax = maximum;
    (*control)->contrlValue = BringIntoRange(**control, (*control)->contrlValue);
    TellOwner(**control, ItemChange::value);
}

void GetControlTitle(ControlHandle control, StringPtr title) {
    ToPascal(control ? FromPascal((*control)->contrlTitle) : std::string(), title);
}

void SetControlTitle(ControlHandle control, ConstStr255Param title) {
    if (!control) return;
    const std::string text = FromPascal(title);
    if (FromPascal((*control)->contrlTitle) == text) return;
    ToPascal(text, (*control)->contrlTitle);
    ItemOf(**control).text = text;
    TellOwner(**control, ItemChange::title);
}

void HiliteControl(ControlHandle control, short state) {
    if (!control || (*control)->contrlHilite == state) return;
    (*control)->contrlHilite = state;
    // The item's kind tells what is seen, whichever call made it so.
    std::int16_t& kind = ItemOf(**control).kind;
    kind = static_cast<std::int16_t>(state == kControlInactive ? kind | kItemDisabled
                                                               : kind & ~kItemDisabled);
    TellOwner(**control, ItemChange::state);
}
