// What a source reports of its native widgets.
#pragma once

#include "DialogRecord.h"

#include <string>

#pragma GCC visibility push(default)

/// Tells the modal loop that an enabled item was used.
void PostItemHit(DialogPtr dialog, short item);
/// An entry was chosen in a pop-up: sets its value and posts the hit. False when item or entry is
/// missing, disabled or a separator.
bool ChoosePopUpEntry(DialogPtr dialog, short item, short entry);
/// The user has changed an edit text: keeps the text and posts the hit.
void EditTextChanged(DialogPtr dialog, short item, const std::string& text);

#pragma GCC visibility pop
