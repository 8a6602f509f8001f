// Menus, which here are the lists behind pop-up controls. Entries count from 1.
#pragma once

#include "ToolboxTypes.h"

#include <string>
#include <vector>

struct MenuEntry {
    std::string text;
    bool enabled = true;
    bool separator = false; ///< a line; cannot be chosen
};

/// A menu lives as long as the dialog whose control it belongs to.
struct MenuInfo {
    std::int16_t id = 0;
    std::string title;
    std::vector<MenuEntry> entries;
    struct DialogRecord* owner = nullptr; ///< told of changes; may be null
    std::int16_t ownerItem = 0;
    bool enabled = true; ///< false: no entry can be chosen

    /// True when a user can choose that entry.
    bool CanChoose(short entry) const {
        if (!enabled || entry < 1 || static_cast<std::size_t>(entry) > entries.size()) return false;
        const MenuEntry& chosen = entries[static_cast<std::size_t>(entry) - 1];
        return chosen.enabled && !chosen.separator;
    }
};
using MenuHandle = MenuInfo**;

/// Inserts an entry behind entry `after` (0 puts it first, past the end puts it last). The text
/// "(-" makes a separator; any other text is taken as it is.
void InsertMenuItem(MenuHandle menu, ConstStr255Param text, short after);
void SetMenuItemText(MenuHandle menu, short entry, ConstStr255Param text);
void GetMenuItemText(MenuHandle menu, short entry, StringPtr text); ///< empty when there is none
short CountMenuItems(MenuHandle menu);
/// Entry 0 is the whole menu. Both do nothing for a null menu or an entry that is not there.
void EnableItem(MenuHandle menu, short entry);
void DisableItem(MenuHandle menu, short entry);

// Older names
inline short CountMItems(MenuHandle menu) {
    return CountMenuItems(menu);
}
inline void InsMenuItem(MenuHandle menu, ConstStr255Param text, short after) {
    InsertMenuItem(menu, text, after);
}
inline void SetItem(MenuHandle menu, short entry, ConstStr255Param text) {
    SetMenuItemText(menu, entry, text);
}
inline void GetItem(MenuHandle menu, short entry, StringPtr text) {
    GetMenuItemText(menu, entry, text);
}
