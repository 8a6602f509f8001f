// The dialog item utilities against a toolbox that only notes what it is asked for.
#include "LocalDialogUtilities.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

/// The one item of the one dialog, and the window that lies under the mouse.
struct Scene {
    short kind = kUserItem;
    Handle handle = nullptr;
    Rect rect = {20, 30, 120, 230};
    short part = inContent;
    WindowPtr window = nullptr;
    GrafPtr port = nullptr;
    short value = 3, maximum = 5;
    Calls calls;
};
Scene scene;

template <typename... Words> void Note(const Words&... words) {
    std::ostringstream line;
    const char* gap = "";
    ((line << gap << words, gap = " "), ...);
    scene.calls.push_back(line.str());
}

const char* Name(const void* handle) {
    if (handle == nullptr) return "null";
    return handle == static_cast<const void*>(scene.handle) ? "handle" : "other";
}

constexpr short kItem = 6;

} // namespace

void GetDialogItem(DialogPtr, short item, short* kind, Handle* handle, Rect* rect) {
    EXPECT_EQ(item, kItem);
    *kind = scene.kind;
    *handle = scene.handle;
    *rect = scene.rect;
}
void SetDialogItem(DialogPtr, short item, short kind, Handle handle, const Rect* rect) {
    EXPECT_EQ(*rect, scene.rect);
    Note("SetDialogItem", item, kind, Name(handle));
}
void InvalItem(DialogPtr, short item) {
    Note("InvalItem", item);
}
void DisableControl(DialogPtr, short item) {
    Note("DisableControl", item);
}
void EnableControl(DialogPtr, short item) {
    Note("EnableControl", item);
}
short GetControlValue(ControlHandle control) {
    EXPECT_STREQ(Name(control), "handle");
    return scene.value;
}
short GetControlMaximum(ControlHandle) {
    return scene.maximum;
}
void SetControlMaximum(ControlHandle control, short maximum) {
    Note("SetControlMaximum", Name(control), maximum);
}
void SetControlValue(ControlHandle control, short value) {
    Note("SetControlValue", Name(control), value);
}
void HiliteControl(ControlHandle control, short state) {
    Note("HiliteControl", Name(control), state);
}
void EnableItem(MenuHandle menu, short entry) {
    Note("EnableItem", Name(menu), entry);
}
void DisableItem(MenuHandle menu, short entry) {
    Note("DisableItem", Name(menu), entry);
}
short FindWindow(Point, WindowPtr* window) {
    *window = scene.window;
    return scene.part;
}
void GetPort(GrafPtr* port) {
    *port = scene.port;
}
void SetPort(GrafPtr port) {
    scene.port = port;
    Note("SetPort");
}
void GlobalToLocal(Point* point) {
    point->v = static_cast<short>(point->v - scene.port->origin.v);
    point->h = static_cast<short>(point->h - scene.port->origin.h);
}
short FindDialogItem(DialogPtr, Point local) {
    const Rect& rect = scene.rect;
    const bool inside = local.v >= rect.top && local.v < rect.bottom && local.h >= rect.left &&
                        local.h < rect.right;
    return inside ? kItem - 1 : -1;
}

namespace {

class DialogItems : public testing::Test {
  protected:
    DialogItems() { scene = {}; }

    DialogRecord dialog, otherWindow;
};

TEST_F(DialogItems, ChangeStateThroughTheirControlOnlyFromTheOtherState) {
    Ptr block = nullptr;
    for (const short kind : std::vector<short>{0, 4, 5, 7, 8, 16, 128, 132, 133, 135, 136, 144}) {
        scene.kind = kind;
        scene.handle = &block;
        const auto written = [](int newKind) {
            return Calls{"SetDialogItem 6 " + std::to_string(newKind) + " handle", "InvalItem 6"};
        };
        const Calls disabled = kind == 4 ? Calls{"DisableControl 6"} : written(kind | 128);
        const Calls enabled = kind == 132 ? Calls{"EnableControl 6"} : written(kind & 127);

        const struct {
            const char* name;
            void (*act)(DialogPtr);
            const Calls& want;
        } cases[] = {
            {"disable", [](DialogPtr d) { DisableDialogItem(d, kItem); }, disabled},
            {"enable", [](DialogPtr d) { EnableDialogItem(d, kItem); }, enabled},
            {"set to 0", [](DialogPtr d) { EnableDisableDialogItem(d, kItem, 0); }, disabled},
            {"set to 2", [](DialogPtr d) { EnableDisableDialogItem(d, kItem, 2); }, enabled},
        };
        for (const auto& c : cases) {
            scene.calls.clear();
            c.act(&dialog);
            EXPECT_EQ(scene.calls, c.want) << c.name << " kind " << kind;
        }
    }
}

TEST_F(DialogItems, ReachTheirControl) {
    Ptr block = nullptr;
    scene.handle = &block;
    EXPECT_EQ(static_cast<void*>(ItemToControl(&dialog, kItem)), &block);
    EXPECT_EQ(GetItemValue(&dialog, kItem), 3);
    SetItemValue(&dialog, kItem, 9);
    SetItemHilite(&dialog, kItem, 255);
    EXPECT_EQ(scene.calls, (Calls{"SetControlValue handle 9", "HiliteControl handle 255"}));
}

TEST_F(DialogItems, HaveAMenuOnlyBehindAPopUp) {
    MenuInfo info;
    MenuInfo* infoPointer = &info;
    MenuHandle menu = &infoPointer;
    auto data = reinterpret_cast<Ptr>(&menu);
    ControlRecord popUp = {}, plain = {};
    popUp.contrlData = &data;
    ControlRecord *popUpPointer = &popUp, *plainPointer = &plain;
    const UserItemProc draw = [](DialogPtr, short) {};
    const struct {
        const char* name;
        short kind;
        Handle handle;
        MenuHandle want;
    } cases[] = {
        {"a pop-up", 7, reinterpret_cast<Handle>(&popUpPointer), menu},
        {"a disabled pop-up", 135, reinterpret_cast<Handle>(&popUpPointer), menu},
        {"a check box", 5, reinterpret_cast<Handle>(&plainPointer), nullptr},
        {"a static text", 8, nullptr, nullptr},
        {"a drawn item", 0, ProcToHandle(draw), nullptr},
    };
    for (const auto& c : cases) {
        scene.kind = c.kind;
        scene.handle = c.handle;
        scene.calls.clear();
        EXPECT_EQ(GetPopupItemMenuHandle(&dialog, kItem), c.want) << c.name;
        EnablePopupMenuItem(&dialog, kItem, 2);
        DisablePopupMenuItem(&dialog, kItem, 7);
        const std::string name = c.want == nullptr ? "null" : "other";
        EXPECT_EQ(scene.calls, (Calls{"EnableItem " + name + " 2", "DisableItem " + name + " 7"}))
            << c.name;
    }
}

TEST_F(DialogItems, RaiseAPopUpsMaximumBeforeAValueBeyondIt) {
    Ptr block = nullptr;
    const struct {
        short value;
        Calls want;
    } cases[] = {
        {3, {}}, // chosen already
        {5, {"SetControlValue handle 5"}},
        {1, {"SetControlValue handle 1"}},
        {6, {"SetControlMaximum handle 6", "SetControlValue handle 6"}},
        {40, {"SetControlMaximum handle 40", "SetControlValue handle 40"}},
    };
    scene.handle = &block;
    for (const auto& c : cases) {
        scene.calls.clear();
        MySetPopUpMenuValue(&dialog, kItem, c.value);
        EXPECT_EQ(scene.calls, c.want) << "value " << c.value;
    }
}

TEST_F(DialogItems, AreFoundUnderTheMouseAndLeaveThePort) {
    dialog.origin = {100, 200};
    otherWindow.origin = {7, 9};
    const struct {
        const char* name;
        Point mouse;
        short part;
        WindowPtr window;
        bool found;
        std::size_t portChanges;
    } cases[] = {
        {"inside", {125, 242}, inContent, &dialog, true, 2},
        {"the last pixel", {219, 429}, inContent, &dialog, true, 2},
        {"beside every item", {119, 242}, inContent, &dialog, false, 2},
        {"in the title bar", {125, 242}, 4, &dialog, false, 0},
        {"in another window", {125, 242}, inContent, &otherWindow, false, 0},
        {"on the desktop", {125, 242}, 0, nullptr, false, 0},
    };
    for (const auto& c : cases) {
        scene.part = c.part;
        scene.window = c.window;
        for (const bool wantsDetails : {true, false}) {
            scene.port = &otherWindow;
            scene.calls.clear();
            const Point mouse = c.mouse;
            short item = -7;
            Point offset = {-1, -2};
            Rect rect = {-1, -2, -3, -4};
            const bool found =
                DialogItemPoint(&mouse, &dialog, &item, wantsDetails ? &offset : nullptr,
                                wantsDetails ? &rect : nullptr) != 0;
            EXPECT_EQ(found, c.found) << c.name;
            EXPECT_EQ(item, c.found ? kItem : -7) << c.name;
            const bool filled = c.found && wantsDetails;
            EXPECT_EQ(offset, filled ? (Point{static_cast<short>(mouse.v - 120),
                                              static_cast<short>(mouse.h - 230)})
                                     : (Point{-1, -2}))
                << c.name;
            EXPECT_EQ(rect, filled ? scene.rect : (Rect{-1, -2, -3, -4})) << c.name;
            EXPECT_EQ(scene.port, &otherWindow) << c.name;
            EXPECT_EQ(scene.calls.size(), c.portChanges) << c.name;
        }
    }
}

} // namespace
