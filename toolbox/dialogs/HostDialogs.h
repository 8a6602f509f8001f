// The host's calls for plug-in dialogs: numbers and texts in items, check boxes, pop-ups, the
// colour picker.
#pragma once

#include "DialogManager.h"

#pragma GCC visibility push(default)

inline std::intptr_t GetMoveableWRefCon(DialogPtr dialog) {
    return GetWRefCon(dialog);
}

/// Reads an edit text as a whole number. False after telling the user, with the text selected,
/// when it is none or lies outside the range.
Boolean FetchNumber(DialogPtr dialog, short item, std::int32_t minimum, std::int32_t maximum,
                    std::int32_t* number);
void StuffNumber(DialogPtr dialog, short item, std::int32_t number);
void FetchText(DialogPtr dialog, short item, StringPtr text);
void StuffText(DialogPtr dialog, short item, ConstStr255Param text);
void SelectTextItem(DialogPtr dialog, short item); ///< selects all of it and gives it the keys
/// The item becomes a frame around others; presses go to what lies inside.
void SetOutlineGroup(DialogPtr dialog, short item);

void SetCheckBoxState(DialogPtr dialog, short item, Boolean checked);
Boolean GetCheckBoxState(DialogPtr dialog, short item);
short GetPopUpMenuValue(DialogPtr dialog, short item);

/// Digits with an optional sign; anything else ends the number. No digits give 0.
void StringToNumber(ConstStr255Param text, std::int32_t* number);
void NumberToString(std::int32_t number, StringPtr text);
inline void NumToString(std::int32_t number, StringPtr text) {
    NumberToString(number, text);
}

/// The toolbox's colour picker: true when a colour was chosen.
Boolean GetColor(Point where, ConstStr255Param prompt, const RGBColor* start, RGBColor* picked);

/// Cursor animations, which this toolbox leaves out on purpose: a module may call them, and each
/// says on standard error that cursors are not animated and does nothing else.
void InitCursorCtl(Handle cursors);
void RotateCursor(std::int32_t counter);
void SpinCursor(short increment);

#pragma GCC visibility pop
