// Reads the resources that describe dialogs: DLOG, DITL, CNTL, MENU and ALRT.
//
// Each reader answers nothing when the resource is missing or ends before it should.
#pragma once

#include "DialogRecord.h"

#include <optional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

struct DialogTemplate {
    Rect bounds; ///< global
    std::int32_t refCon = 0;
    std::int16_t itemList = 0; ///< id of the DITL
    std::string title;
};

struct ItemTemplate {
    std::int16_t kind = 0;
    Rect rect;
    std::string text;      ///< of buttons, check boxes, static and edit texts
    std::int16_t data = 0; ///< id of a control or picture
};

struct ControlTemplate {
    std::int16_t value = 0;
    std::int16_t maximum = 0;
    std::int16_t minimum = 0;
    std::int16_t procID = 0;
    std::string title;
};

/// The definition procedure of pop-ups, whose minimum is the id of their menu.
constexpr std::int16_t kPopUpMenuProc = 1008;

std::optional<DialogTemplate> ReadDialogTemplate(short id);
std::optional<std::vector<ItemTemplate>> ReadItemList(short id);
std::optional<ControlTemplate> ReadControlTemplate(short id);
std::optional<MenuInfo> ReadMenu(short id);
/// The id of an alert's DITL.
std::optional<std::int16_t> ReadAlertItemList(short id);

/// Where the dialog of a DLOG resource comes up: in the middle of the screen.
void CenterDialog(Handle dialogResource);

#pragma GCC visibility pop
