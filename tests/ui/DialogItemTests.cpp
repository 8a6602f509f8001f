// The dialog item utilities with items of every kind.
#include "LocalDialogUtilities.h"

#include "HostDialogs.h"
#include "ScriptSource.h"
#include "TestDialog.h"

#include <gtest/gtest.h>

namespace {

class DialogItems : public testing::Test {
  protected:
    DialogItems() {
        SetEventSource(&user);
        dialog = GetNewDialog(kTestDialog, nullptr, nullptr);
        dialog->Item(kTestCells)->draw = [](DialogPtr, short) {}; // no control, but a handle
        ShowWindow(dialog);
    }
    ~DialogItems() override {
        DisposeDialog(dialog);
        SetEventSource(nullptr);
    }

    TestDialogResources resources;
    ScriptSource user{std::vector<Act>{}};
    DialogPtr dialog;
};

// Deliberate: a push button goes through its control only when its state changes, and is drawn anew
// only when it does not.
TEST_F(DialogItems, AreDrawnAnewUnlessTheyArePushButtonsThatChange) {
    for (short item = 1; dialog->Item(item) != nullptr; ++item)
        for (const bool enable : {false, false, true, true}) {
            DialogItem& record = *dialog->Item(item);
            const bool changes = record.IsDisabled() == enable;
            record.invalid = false;
            EnableDisableDialogItem(dialog, item, enable);
            EXPECT_EQ(record.IsDisabled(), !enable) << item;
            EXPECT_EQ(record.invalid, record.BaseKind() != kButtonItem || !changes) << item;
        }
}

TEST_F(DialogItems, HaveAMenuOnlyBehindAPopUp) {
    for (short item = 1; dialog->Item(item) != nullptr; ++item) {
        EXPECT_EQ(GetPopupItemMenuHandle(dialog, item), dialog->Item(item)->menu) << item;
        DisablePopupMenuItem(dialog, item, 2);
    }
    EXPECT_FALSE((*dialog->Item(kTestColours)->menu)->entries[1].enabled);
    DisableDialogItem(dialog, kTestColours);
    EnablePopupMenuItem(dialog, kTestColours, 2);
    EXPECT_TRUE((*dialog->Item(kTestColours)->menu)->entries[1].enabled);
}

TEST_F(DialogItems, AreFoundUnderTheMouseAndLeaveThePort) {
    dialog->origin = {100, 200};
    GrafPort other;
    const struct {
        const char* name;
        Point mouse;
        short item; ///< 0 for none
        Point offset;
    } cases[] = {
        {"inside the canvas", {125, 242}, kTestCanvas, {5, 22}},
        {"its last pixel", {239, 379}, kTestCanvas, {119, 159}},
        {"beside every item", {105, 242}, 0, {}},
        {"outside of the dialog", {25, 42}, 0, {}},
    };
    for (const auto& c : cases)
        for (const bool wantsDetails : {true, false}) {
            SetPort(&other);
            short item = -7;
            Point offset = {-1, -2};
            Rect rect = {-1, -2, -3, -4};
            const bool found =
                DialogItemPoint(&c.mouse, dialog, &item, wantsDetails ? &offset : nullptr,
                                wantsDetails ? &rect : nullptr) != 0;
            EXPECT_EQ(found, c.item != 0) << c.name;
            EXPECT_EQ(item, found ? c.item : -7) << c.name;
            const bool filled = found && wantsDetails;
            EXPECT_EQ(offset, filled ? c.offset : (Point{-1, -2})) << c.name;
            EXPECT_EQ(rect, filled ? dialog->Item(item)->rect : (Rect{-1, -2, -3, -4})) << c.name;
            GrafPtr port = nullptr;
            GetPort(&port);
            EXPECT_EQ(port, &other) << c.name;
        }
    const DialogPtr inFront = GetNewDialog(kTestDialog, nullptr, nullptr);
    ShowWindow(inFront);
    short item = 0;
    EXPECT_FALSE(DialogItemPoint(&cases[0].mouse, dialog, &item, nullptr, nullptr));
    DisposeDialog(inFront);
    SetPort(nullptr);
}

} // namespace
