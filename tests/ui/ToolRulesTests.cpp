// Cursors and buttons of the tools, and double clicks. PreviewToolsTests.cpp has the rest at work.
#include "ToolRules.h"

#include <gtest/gtest.h>

namespace {

TEST(Tools, HaveTheirCursorAndButton) {
    const struct {
        int tool;
        short cursor, item;
    } cases[] = {{handTool, 2001, 9},
                 {eyeDropperTool, 2000, 11},
                 {zoomInTool, 2002, 10},
                 {zoomOutTool, 2003, 10},
                 {eyeDropperPlusTool, 2004, 11},
                 {eyeDropperMinusTool, 2005, 11},
                 {6, -1, 9},
                 {-1, -1, 9}};
    for (const auto& c : cases) {
        EXPECT_EQ(GetToolCursorID(ToolType{c.tool}), c.cursor) << "tool " << c.tool;
        EXPECT_EQ(ToolTypeToToolSlot(ToolType{c.tool}), c.item) << "tool " << c.tool;
    }
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

} // namespace
