#include "ToolRules.h"

#include <algorithm>
#include <iterator>

namespace {

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
    return SlotOfTool(kIndexedPreviewItems, tool);
}

short SlotOfTool(const PreviewItems& items, ToolType tool) {
    return items.buttons[static_cast<int>(ToolTypeToToolButton(tool))];
}

ToolButton ButtonOfSlot(const PreviewItems& items, short item) {
    const auto* const slot = std::find(std::begin(items.buttons), std::end(items.buttons), item);
    return slot == std::end(items.buttons)
               ? ToolButton::hand
               : static_cast<ToolButton>(slot - std::begin(items.buttons));
}

bool IsButton(const PreviewItems& items, short item) {
    return items.buttons[static_cast<int>(ButtonOfSlot(items, item))] == item;
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

ToolType ToolForKeys(ToolType selected, const HeldKeys& keys) {
    const ToolButton button = keys.space ? ToolButton::hand : ToolTypeToToolButton(selected);
    if (button == ToolButton::eyedropper) {
        if (keys.shift) return eyeDropperPlusTool;
        return keys.command ? eyeDropperMinusTool : selected;
    }
    if (keys.option) return zoomOutTool;
    if (keys.command) return zoomInTool;
    return button == ToolButton::hand ? handTool : selected;
}
