// What the preview's tool buttons stand for and what a click on one chooses: plain rules that the
// previews of both dialogs follow.
#pragma once

#include "GetParameters.h"
#include "PreviewGeometry.h"

#include <cstdint>
#include <optional>

/// No change of cursor.
constexpr short kNoCursor = -1;

/// Keys that change what the tools do.
struct HeldKeys {
    bool space;
    bool command;
    bool shift;
    bool option;
};

/// What the buttons that have two sides show.
struct ToolButtonState {
    bool zoomIsIn;        ///< the zoom button enlarges
    bool dropperIsPlus;   ///< the eyedropper button marks colours
    bool dropperIsDimmed; ///< transparency comes from a channel: there is nothing to pick
};

/// What a click on a button leads to.
struct ToolChoice {
    ToolType tool;
    short zoomMode; ///< kNoZoomMode or what ZoomToMode takes
};

/// The press before this one.
struct LastPress {
    std::uint32_t time = 0; ///< ticks
    short item = 0;
};

/// Resource id of a tool's cursor; kNoCursor for values that are no tool.
short GetToolCursorID(ToolType tool);

/// The button that a tool belongs to; the hand's for values that are no tool.
ToolButton ToolTypeToToolButton(ToolType tool);

/// Item of a tool's button in the indexed dialog.
short ToolTypeToToolSlot(ToolType tool);

/// Item of a tool's button.
short SlotOfTool(const PreviewItems& items, ToolType tool);
/// The button that an item is; the hand for items that are none.
ToolButton ButtonOfSlot(const PreviewItems& items, short item);
/// True for the items of the tool box's buttons.
bool IsButton(const PreviewItems& items, short item);

/// Resource id of a button's picture.
short ToolPictureID(ToolButton button, const ToolButtonState& state, bool isSelected);

/// Notes a press on `item` at `when` that is handled at `now`, both in ticks, and tells whether it
/// is the second of a double click.
bool NotePress(LastPress* last, short item, std::uint32_t when, std::uint32_t now,
               std::uint32_t doubleClickTicks);

/// The tool that a click on a button chooses, after turning the button to its other side when the
/// option key is down. Nothing, with nothing changed, for a dimmed eyedropper.
std::optional<ToolChoice> ChooseTool(ToolButton button, bool optionDown, bool isDoubleClick,
                                     ToolButtonState* state);

/// What a click in the preview does with the selected tool and the keys held.
ToolType ToolForKeys(ToolType selected, const HeldKeys& keys);
