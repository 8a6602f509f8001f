// Menus, which here are the lists behind pop-up controls. Entries count from 1.
#pragma once

#include "DialogRecord.h"

#pragma GCC visibility push(default)

/// Inserts an entry behind entry `after` (0 puts it first, past the end puts it last). The text
/// "(-" makes a separator; any other text is taken as it is.
void InsertMenuItem(MenuHandle menu, ConstStr255Param text, short after);
void SetMenuItemText(MenuHandle menu, short entry, ConstStr255Param text);
void GetMenuItemText(MenuHandle menu, short entry, StringPtr text); ///< empty when there is none
short CountMenuItems(MenuHandle menu);
/// Entry 0 is the whole menu. Both do nothing for a null menu or an entry that is not there.
void EnableItem(MenuHandle menu, short entry);
void DisableItem(MenuHandle menu, short entry);

#pragma GCC visibility pop
