// Sentences and boxes that only tell the user something.
#pragma once

#include <cstdint>
#include <string>

#pragma GCC visibility push(default)

/// Shows a sentence that the user must see, on standard error where no source operates dialogs.
void ShowCaution(const std::string& sentence);

/// Shows the alert of that resource id with the texts of ParamText.
void ShowAlert(short id);

/// Shows the dialog of that resource id, which only tells something: item 1 is its default item,
/// its cancel item and the only way out. A missing resource shows nothing.
void ShowNoticeDialog(short id);

/// Shows the about box whose dialog has this resource id: in its dialog when a source operates
/// dialogs and no responder is set, else as the texts of its static items, in order of their item
/// numbers. Nothing is shown when the resource is missing.
void ShowAbout(std::int16_t dialogID);

#pragma GCC visibility pop
