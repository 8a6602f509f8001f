// Double clicks and the digits of the scale.
#include "ModuleResources.h"
#include "ToolRules.h"

#include "IndexedDialog.h"
#include "PreviewTools.h"
#include "ScriptedUser.h"

#include <gtest/gtest.h>

namespace {

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
        bool& isInvalid = dialog->Item(kIndexedZoomTextItem)->invalid;
        isInvalid = false;
        SetZoomFactor(dialog, c.enlarge, c.shrink, kIndexedZoomTextItem);
        EXPECT_TRUE(isInvalid) << "it is drawn again";
        EXPECT_EQ(SubstituteParamText("^0|^1|^2|^3"), c.want);
    }
    DisposeDialog(dialog);
}

} // namespace
