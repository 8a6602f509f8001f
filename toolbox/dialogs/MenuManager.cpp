#include "MenuManager.h"

#include "EventSource.h"
#include "PascalStrings.h"

#include <algorithm>
#include <limits>

namespace {

MenuEntry* EntryOf(MenuHandle menu, short entry) {
    if (!menu || entry < 1 || entry > CountMenuItems(menu)) return nullptr;
    return &(*menu)->entries[static_cast<std::size_t>(entry) - 1];
}

void TellOwner(const MenuInfo& menu) {
    if (menu.owner) TellSource(menu.owner, menu.ownerItem, ItemChange::menu);
}

void SetEnabled(MenuHandle menu, short entry, bool enabled) {
    if (!menu) return;
    MenuEntry* const one = EntryOf(menu, entry);
    if (!one && entry != 0) return;
    bool& state = one ? one->enabled : (*menu)->enabled;
    if (state == enabled) return;
    state = enabled;
    TellOwner(**menu);
}

} // namespace

void InsertMenuItem(MenuHandle menu, ConstStr255Param text, short after) {
    if (!menu || CountMenuItems(menu) == std::numeric_limits<short>::max()) return;
    const std::string inserted = FromPascal(text);
    const MenuEntry line = {"-", false, true};
    auto& entries = (*menu)->entries;
    const auto place = std::clamp<std::ptrdiff_t>(after, 0, CountMenuItems(menu));
    entries.insert(entries.begin() + place, inserted == "(-" ? line : MenuEntry{inserted});
    TellOwner(**menu);
}

void SetMenuItemText(MenuHandle menu, short entry, ConstStr255Param text) {
    MenuEntry* const named = EntryOf(menu, entry);
    const std::string name = FromPascal(text);
    if (!named || named->text == name) return;
    named->text = name;
    TellOwner(**menu);
}

void GetMenuItemText(MenuHandle menu, short entry, StringPtr text) {
    const MenuEntry* const named = EntryOf(menu, entry);
    ToPascal(named ? named->text : std::string(), text);
}

short CountMenuItems(MenuHandle menu) {
    return menu ? static_cast<short>((*menu)->entries.size()) : short{0};
}

void EnableItem(MenuHandle menu, short entry) {
    SetEnabled(menu, entry, true);
}

void DisableItem(MenuHandle menu, short entry) {
    SetEnabled(menu, entry, false);
}
