// The calls on dialogs, their windows and their items. Items count from 1.
#pragma once

#include "DialogRecord.h"

#include <string>
#include <vector>

#pragma GCC visibility push(default)

// Dialogs

/// Makes a dialog from its DLOG and DITL resources, invisible, in front of all others. Null when a
/// resource is missing or malformed or there is no memory. `storage` and `behind` are not used.
DialogPtr GetNewDialog(short id, void* storage, WindowPtr behind);
void DisposeDialog(DialogPtr dialog);
void ShowWindow(WindowPtr window);
void SetWRefCon(WindowPtr window, std::intptr_t value);
std::intptr_t GetWRefCon(WindowPtr window);

/// Return and Enter press it, unless the user gave the keys to another button.
void SetDialogDefaultItem(DialogPtr dialog, short item);
void SetDialogCancelItem(DialogPtr dialog, short item); ///< Escape, Command-period, closing
/// The cursor is the arrow, over edit texts the bar, wherever the filter chooses none.
void SetDialogTracksCursor(DialogPtr dialog, Boolean tracks);

/// The texts that replace ^0 to ^3 in static texts and alerts whenever they are drawn.
void ParamText(ConstStr255Param text0, ConstStr255Param text1, ConstStr255Param text2,
               ConstStr255Param text3);
/// A text with ^0 to ^3 replaced.
std::string SubstituteParamText(const std::string& text);

// Items; a number that is not there reads as kind 0 and an empty rectangle, and writes nothing

/// `handle` is the control of a control item, the draw procedure of a user item, else null.
void GetDialogItem(DialogPtr dialog, short item, short* kind, Handle* handle, Rect* rect);
/// Writing back what was read changes nothing. Of the kind only kItemDisabled can be changed, and
/// reaches the native widget; of the handle only a user item's draw procedure.
void SetDialogItem(DialogPtr dialog, short item, short kind, Handle handle, const Rect* rect);
void InvalItem(DialogPtr dialog, short item); ///< draws it before the next event is taken
/// Item number less one of the first item, in their order, that holds the local point; -1 for
/// none. Outline groups hold no points, disabled items do.
short FindDialogItem(DialogPtr dialog, Point local);
/// Platform calls for push buttons: leave kind 132 and 4.
void DisableControl(DialogPtr dialog, short item);
void EnableControl(DialogPtr dialog, short item);

/// A user item's draw procedure as SetDialogItem takes it, and back.
inline Handle ProcToHandle(UserItemProc procedure) {
    return reinterpret_cast<Handle>(procedure);
}

/// The dialog's text edit: activating gives the edit item keys and a caret.
using TEHandle = DialogPtr;
inline TEHandle GetDialogTextEditHandle(DialogPtr dialog) {
    return dialog;
}
void TEActivate(TEHandle text);
void TEDeactivate(TEHandle text);

// Older names
inline void GetDItem(DialogPtr dialog, short item, short* kind, Handle* handle, Rect* rect) {
    GetDialogItem(dialog, item, kind, handle, rect);
}
inline void SetDItem(DialogPtr dialog, short item, short kind, Handle handle, const Rect* rect) {
    SetDialogItem(dialog, item, kind, handle, rect);
}

// Windows

constexpr short inContent = 3;

/// What lies at a global point: inContent with the dialog there, or 0 with null, also while a
/// pop-up list or another modal window covers it.
short FindWindow(Point global, WindowPtr* window);

/// Every open dialog, the one in front first.
const std::vector<DialogPtr>& OpenDialogs();

#pragma GCC visibility pop
