#include "ToolRules.h"

#include "ModuleResources.h"

namespace {

constexpr short kNoCursor = -1;

struct ToolTraits {
    short cursor;
    ToolButton button;
};

/// In the order of ToolType.
constexpr ToolTraits kTools[] = {
    {2001, ToolButton::hand}, {2000, ToolButton::eyedropper}, {2002, ToolButton::zoom},
    {2003, ToolButton::zoom}, {2004, ToolButton::eyedropper}, {2005, ToolButton::eyedropper},
};
constexpr ToolTraits kNoTool = {kNoCursor, ToolButton::hand};

const ToolTraits& TraitsOf(ToolType tool) {
    return tool >= handTool && tool <= eyeDropperMinusTool ? kTools[tool] : kNoTool;
}

constexpr short kHandPicture = 500;
constexpr short kPlusPicture = 506;
constexpr short kMinusPicture = 508;
constexpr short kZoomInPicture = 510;
constexpr short kZoomOutPicture = 512;
constexpr short kDimmedPicture = 514;

short PlainPictureID(ToolButton button, const ToolButtonState& state) {
    if (button == ToolButton::hand) return kHandPicture;
    if (button == ToolButton::zoom) return state.zoomIsIn ? kZoomInPicture : kZoomOutPicture;
    if (state.dropperIsDimmed) return kDimmedPicture;
    return state.dropperIsPlus ? kPlusPicture : kMinusPicture;
}

} // namespace

short GetToolCursorID(ToolType tool) {
    return TraitsOf(tool).cursor;
}

ToolButton ToolTypeToToolButton(ToolType tool) {
    return TraitsOf(tool).button;
}

short ToolTypeToToolSlot(ToolType tool) {
    switch (ToolTypeToToolButton(tool)) {
    case ToolButton::zoom:
        return kIndexedZoomItem;
    case ToolButton::eyedropper:
        return kIndexedDropperItem;
    case ToolButton::hand:
        break;
    }
    return kIndexedHandItem;
}

ToolButton ToolSlotToToolButton(short item) {
    if (item == kIndexedZoomItem) return ToolButton::zoom;
    if (item == kIndexedDropperItem) return ToolButton::eyedropper;
    return ToolButton::hand;
}

short ToolPictureID(ToolButton button, const ToolButtonState& state, bool isSelected) {
    // Each picture is followed by the one of the selected button.
    return static_cast<short>(PlainPictureID(button, state) + (isSelected ? 1 : 0));
}

bool NotePress(LastPress* last, short item, std::uint32_t when, std::uint32_t now,
               std::uint32_t doubleClickTicks) {
    const bool isDouble = when < last->time + doubleClickTicks && item == last->item;
    *last = {now, item};
    return isDouble;
}

std::optional<ToolChoice> ChooseTool(ToolButton button, bool optionDown, bool isDoubleClick,
                                     ToolButtonState* state) {
    if (button == ToolButton::zoom) {
        if (optionDown) state->zoomIsIn = !state->zoomIsIn;
        return ToolChoice{state->zoomIsIn ? zoomInTool : zoomOutTool,
                          isDoubleClick ? kZoomToActualPixels : kNoZoomMode};
    }
    if (button == ToolButton::eyedropper) {
        if (state->dropperIsDimmed) return std::nullopt;
        if (optionDown) state->dropperIsPlus = !state->dropperIsPlus;
        return ToolChoice{state->dropperIsPlus ? eyeDropperPlusTool : eyeDropperMinusTool,
                          kNoZoomMode};
    }
    return ToolChoice{handTool, isDoubleClick ? kZoomToFit : kNoZoomMode};
}
