// Which tool the buttons and keys stand for, cursors, double clicks, and the scale's digits.
#include "ToolRules.h"

#include "IndexedDialog.h"
#include "IndexedFilter.h"
#include "PreviewTools.h"
#include "ScriptedUser.h"

#include <gtest/gtest.h>

namespace {

TEST(Tools, ThatAreNoneHaveTheHandsButtonAndNoCursor) {
    for (const int tool : {-1, 6}) {
        EXPECT_EQ(GetToolCursorID(ToolType{tool}), -1) << "tool " << tool;
        EXPECT_EQ(ToolTypeToToolSlot(ToolType{tool}), kIndexedHandItem) << "tool " << tool;
    }
    EXPECT_EQ(GetToolCursorID(eyeDropperTool), 2000);
}

TEST(Tools, ChangeWithTheKeysHeld) {
    // In the order of HeldKeys: space, command, shift, option.
    const struct {
        ToolType selected;
        HeldKeys keys;
        ToolType want;
    } cases[] = {
        {handTool, {0, 0, 1, 0}, handTool},
        {handTool, {0, 1, 0, 0}, zoomInTool},
        {handTool, {0, 1, 0, 1}, zoomOutTool},
        {zoomInTool, {0, 0, 1, 0}, zoomInTool},
        {zoomInTool, {0, 0, 0, 1}, zoomOutTool},
        {zoomOutTool, {0, 0, 0, 0}, zoomOutTool},
        {zoomOutTool, {0, 1, 0, 0}, zoomInTool},
        {zoomOutTool, {0, 1, 0, 1}, zoomOutTool},
        {zoomInTool, {1, 0, 0, 0}, handTool},
        {eyeDropperPlusTool, {0, 0, 0, 1}, eyeDropperPlusTool},
        {eyeDropperPlusTool, {0, 1, 0, 0}, eyeDropperMinusTool},
        {eyeDropperPlusTool, {0, 1, 1, 0}, eyeDropperPlusTool},
        {eyeDropperMinusTool, {0, 0, 0, 0}, eyeDropperMinusTool},
        {eyeDropperMinusTool, {0, 0, 1, 0}, eyeDropperPlusTool},
        {eyeDropperPlusTool, {1, 0, 0, 0}, handTool},
        {eyeDropperMinusTool, {1, 1, 0, 0}, zoomInTool},
        {eyeDropperPlusTool, {1, 0, 0, 1}, zoomOutTool},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ToolForKeys(c.selected, c.keys), c.want) << "case " << &c - cases;
}

TEST(DoubleClick, NeedsTheSameItemSoonAfterTheLastPressWasHandled) {
    const struct {
        short item;
        std::uint32_t when, now;
        bool isDouble;
    } presses[] = {
        {10, 5, 6, false},    {10, 35, 60, true}, // 29 after being handled at 6
        {10, 90, 92, false},                      // 30 after 60 is too late
        {9, 95, 96, false},   {10, 100, 101, false},
        {10, 101, 103, true}, {10, 110, 111, true}, // a third press is one again
    };
    LastPress last;
    for (const auto& p : presses)
        EXPECT_EQ(NotePress(&last, p.item, p.when, p.now, 30), p.isDouble)
            << "item " << p.item << " at " << p.when;
}

TEST(ZoomText, PadsTheScaleOfSingleDigits) {
    const ScriptedUser user({}); // for the resources
    const DialogPtr dialog = GetNewDialog(kIndexedDialog, nullptr, nullptr);
    const struct {
        std::int32_t enlarge, shrink;
        const char* want;
    } cases[] = {{9, 9, " 9|9||"}, {10, 1, "10|1||"}, {1, 10, "1|10||"}};
    for (const auto& c : cases) {
        SetZoomFactor(dialog, c.enlarge, c.shrink, kIndexedZoomTextItem);
        EXPECT_EQ(SubstituteParamText("^0|^1|^2|^3"), c.want);
    }
    DisposeDialog(dialog);
}

} // namespace
