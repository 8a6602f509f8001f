// Dialogs, their windows, items, controls and menus as plain data. Items and menu entries count
// from 1.
#pragma once

#include "QuickDraw.h"

#include <string>
#include <vector>

struct DialogRecord;
using DialogPtr = DialogRecord*;
using WindowPtr = DialogRecord*;

/// Highlight states of a control.
constexpr std::int16_t kControlActive = 0;
constexpr std::int16_t kControlInactive = 255;

struct ControlRecord {
    DialogRecord* contrlOwner;
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
    DialogRecord* owner = nullptr; ///< told of changes; may be null
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

/// Kinds of items; kItemDisabled is added to one that cannot be used.
enum : std::int16_t {
    kUserItem = 0,
    kButtonItem = 4,
    kCheckBoxItem = 5,
    kResourceControlItem = 7, ///< a control of a resource; here always a pop-up
    kStaticTextItem = 8,
    kEditTextItem = 16,
    kItemDisabled = 128,
};

/// Draws one user item; the port is the dialog.
using UserItemProc = void (*)(DialogPtr dialog, short item);

struct DialogItem {
    std::int16_t kind = 0;
    Rect rect; ///< local coordinates
    ControlHandle control = nullptr;
    MenuHandle menu = nullptr;   ///< of a pop-up
    UserItemProc draw = nullptr; ///< of a user item
    std::string text;            ///< title, static text as in the resource, or edit text; UTF-8
    bool isGroup = false;        ///< an outline, not a target of presses
    bool invalid = true;         ///< is to be drawn

    std::int16_t BaseKind() const { return static_cast<std::int16_t>(kind & ~kItemDisabled); }
    bool IsDisabled() const { return (kind & kItemDisabled) != 0; }
};

/// An open dialog: a port with items. Modules reach it through the calls below; displays read it.
struct DialogRecord : GrafPort {
    std::vector<DialogItem> items;
    std::string title;
    std::intptr_t refCon = 0;
    std::int16_t resourceID = 0;
    std::int16_t defaultItem = 0; ///< 0 for none
    std::int16_t cancelItem = 0;  ///< 0 for none
    std::int16_t editItem = 0;    ///< the edit text that takes keys, 0 for none
    bool editActive = true;       ///< false while its text edit is deactivated
    bool tracksCursor = false;
    bool visible = false;

    /// The item of that number, or null.
    DialogItem* Item(short number) {
        return number >= 1 && static_cast<std::size_t>(number) <= items.size()
                   ? &items[static_cast<std::size_t>(number) - 1]
                   : nullptr;
    }
};
