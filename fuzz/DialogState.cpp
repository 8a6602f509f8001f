#include "DialogState.h"

#include "ControlManager.h"
#include "GetParameters.h"
#include "IndexedDialog.h"
#include "MenuManager.h"
#include "ModuleResources.h"
#include "RGBPreview.h"
#include "Require.h"

#include <algorithm>

namespace {

bool IsEnabled(DialogPtr dialog, short item) {
    return !dialog->Item(item)->IsDisabled();
}

short ValueOf(DialogPtr dialog, short item) {
    return GetControlValue(dialog->Item(item)->control);
}

bool ShowsEntry(DialogPtr dialog, short item) {
    const short value = ValueOf(dialog, item);
    return value >= 1 && value <= CountMenuItems(dialog->Item(item)->menu);
}

void CheckBoxes(DialogPtr dialog, short comment, std::initializer_list<short> others) {
    for (const short item : others) {
        const short value = ValueOf(dialog, item);
        Require(value == 0 || value == 1, "a check box is on or off");
    }
    const short value = ValueOf(dialog, comment);
    Require(value == 0 || (value == 1 && IsEnabled(dialog, comment)),
            "a comment that is not there cannot be included");
}

/// `Globals` has the members that describe a view.
void CheckView(const PreviewView& g, const Rect& box) {
    Require(g.enlarge >= 1 && g.enlarge <= 16, "pictures are enlarged up to 16 times");
    Require(g.maxShrink >= 1 && g.maxShrink <= 16, "pictures are reduced up to 16 times");
    Require(g.shrink >= 1 && g.shrink <= g.maxShrink, "no further than to be seen whole");
    Require(g.enlarge == 1 || g.shrink == 1, "a picture is enlarged or reduced");
    const Rect& part = g.srcRect;
    Require(part.top >= 0 && part.left >= 0 && part.bottom <= g.imageSize.v &&
                part.right <= g.imageSize.h,
            "the visible part lies in the picture");
    Require(part.top < part.bottom && part.left < part.right, "there is a visible part");
    Require(g.dstRect.top > box.top && g.dstRect.left > box.left,
            "the view begins inside the box's frame");
    Require(g.dstRect.top <= box.bottom && g.dstRect.left <= box.right, "the view is in the box");
    Require(g.previewBuffer && g.previewColors, "there is memory for the preview");
}

void CheckRGBDialog(DialogPtr dialog) {
    Require(ShowsEntry(dialog, kRGBPalettePopUpItem), "a palette is chosen");
    Require(ValueOf(dialog, kRGBCountPopUpItem) == 0 || ShowsEntry(dialog, kRGBCountPopUpItem),
            "a number of colours is shown where the list has the one that was typed");
    const short palette = ValueOf(dialog, kRGBPalettePopUpItem);
    const bool isExact = palette == kExactEntry;
    Require((*dialog->Item(kRGBPalettePopUpItem)->menu)->CanChoose(palette),
            "the palette in force is one that can be chosen");
    Require(IsEnabled(dialog, kRGBCountItem) != isExact, "an exact palette has its own number");
    Require(IsEnabled(dialog, kRGBCountPopUpItem) != isExact, "and no other can be chosen");
    Require(IsEnabled(dialog, kRGBResizeItem) == (!isExact && palette != kAdaptiveEntry),
            "supplied palettes can be fitted, and no others");
    for (const short label : {kRGBColorLabelItem, kRGBCountLabelItem})
        Require(IsEnabled(dialog, label) != IsEnabled(dialog, static_cast<short>(label + 1)),
                "of a label and its twin one is in use");
    for (const auto& [label, named] :
         {std::pair{kRGBCountLabelItem, kRGBCountItem}, {kRGBColorLabelItem, kRGBColorBoxItem}})
        Require(IsEnabled(dialog, label) == IsEnabled(dialog, named),
                "a label follows what it names");
    CheckBoxes(dialog, kRGBCommentItem, {kRGBInterlaceItem, kRGBResizeItem});
}

void CheckIndexedDialog(DialogPtr dialog) {
    const auto& g = *GlobalsOf(dialog);
    CheckView(g, dialog->Item(kIndexedPreviewItem)->rect);
    Require(ShowsEntry(dialog, kIndexedChannelItem), "a channel is chosen, or none");
    const bool hasChannel = ValueOf(dialog, kIndexedChannelItem) != kNoChannelEntry;
    Require(hasChannel == (g.maskedData != nullptr), "the channel that is shown is in force");
    Require(!hasChannel || (g.maskIndex >= 0 && g.maskIndex <= 255), "and hides an index");
    Require(std::all_of(std::begin(g.transMap), std::end(g.transMap),
                        [](std::uint8_t mark) { return mark <= 1; }),
            "an entry is marked or not");
    const bool hasMarks =
        std::count(std::begin(g.transMap), std::end(g.transMap), std::uint8_t{1}) > 0;
    Require(IsEnabled(dialog, kIndexedSwatchItem) == (hasChannel || hasMarks),
            "transparency has a colour");
    for (const ToolType tool : {g.currentTool, g.selectedTool})
        Require(tool >= handTool && tool <= eyeDropperMinusTool, "a tool is chosen");
    CheckBoxes(dialog, kIndexedCommentItem, {kIndexedInterlaceItem});
}

void CheckPreview(DialogPtr dialog) {
    const auto& g = *ViewOf(dialog);
    CheckView(g, dialog->Item(kRGBPreviewImageItem)->rect);
    for (const ToolType tool : {g.currentTool, g.selectedTool})
        Require(tool == handTool || tool == zoomInTool || tool == zoomOutTool,
                "a tool of the preview is chosen");
}

} // namespace

bool IsPreview(DialogPtr dialog) {
    return dialog->resourceID == kRGBPreviewDialog;
}

void CheckDialogState(DialogPtr dialog) {
    if (IsPreview(dialog)) return CheckPreview(dialog);
    if (dialog->resourceID == kRGBDialog) return CheckRGBDialog(dialog);
    if (dialog->resourceID == kIndexedDialog) return CheckIndexedDialog(dialog);
    Require(false, "no other dialog comes up");
}
