// Items of a dialog as the options dialogs use them: enabling, values, pop-up menus, and what lies
// under the mouse. Items count from 1.
#pragma once

#include "DialogManager.h"

/// Makes an item unusable or usable again and has it drawn anew.
void DisableDialogItem(DialogPtr dialog, short item);
void EnableDialogItem(DialogPtr dialog, short item);
/// Enables the item when `enable` is not 0, else disables it.
void EnableDisableDialogItem(DialogPtr dialog, short item, Boolean enable);

/// The item's handle taken as a control, null where there is none; the item must not be a user
/// item, whose handle is its draw procedure.
ControlHandle ItemToControl(DialogPtr dialog, short item);
short GetItemValue(DialogPtr dialog, short item);
void SetItemValue(DialogPtr dialog, short item, short value);
void SetItemHilite(DialogPtr dialog, short item, short state);

/// The menu of a pop-up control; null when the item is no control or its control has no menu.
MenuHandle GetPopupItemMenuHandle(DialogPtr dialog, short item);
/// Entries count from 1; 0 is the whole menu. Items without a menu are left alone.
void EnablePopupMenuItem(DialogPtr dialog, short item, short entry);
void DisablePopupMenuItem(DialogPtr dialog, short item, short entry);
/// Chooses an entry, raising the control's maximum when the menu has grown past it. Changes nothing
/// when the entry is chosen already.
void MySetPopUpMenuValue(DialogPtr dialog, short item, short value);

/// Finds the item at a global point: true when the point lies in the dialog's content and in an
/// item. Otherwise the outputs are untouched. `offset` (from the item's top left) and `rect` (the
/// item's, local) may be null.
Boolean DialogItemPoint(const Point* global, DialogPtr dialog, short* item, Point* offset,
                        Rect* rect);
