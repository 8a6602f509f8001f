// What the options dialogs share: the preview and its tools, and the state of the indexed dialog.
// The virtual key codes that the dialogs ask for are those of EventManager.h.
#pragma once

#include "ColorTable.h"
#include "EventManager.h"
#include "ModuleResources.h"
#include "QuickDraw.h"

#include <cstdint>

struct ExportRecord;

/// What a click in the preview does.
enum ToolType : std::int32_t {
    handTool = 0,       ///< drags the view
    eyeDropperTool = 1, ///< the plain eyedropper: it has a cursor, but nothing selects it
    zoomInTool = 2,
    zoomOutTool = 3,
    eyeDropperPlusTool = 4,  ///< makes the clicked colour transparent
    eyeDropperMinusTool = 5, ///< makes the clicked colour opaque again
};

/// Any value but zoomIn zooms out.
enum zoomDirection : std::int32_t { zoomIn = 0, zoomOut = 1 };

/// The buttons of a preview's tool box.
enum class ToolButton : std::uint8_t { hand, zoom, eyedropper };

/// The items of a dialog that show a preview and its tools.
struct PreviewItems {
    short image;
    short scale;
    short buttons[3]; ///< in the order of ToolButton; 0 for a button that the dialog does not have
};

/// A preview as both dialogs show it: an indexed image, the part of it in view, and the tools.
struct PreviewView {
    PreviewView(const PreviewItems& theItems, ToolType tool)
        : items(theItems), currentTool(tool), selectedTool(tool) {}

    const PreviewItems& items;
    std::uint8_t* imageData = nullptr; ///< one palette index a pixel
    std::int32_t rowBytes = 0;         ///< from one row of `imageData` to the next
    /// The copy of the image in which a channel has masked pixels out; not null means that
    /// transparency comes from that channel.
    std::uint8_t* maskedData = nullptr;
    std::int32_t maskedRowBytes = 0;       ///< from one row of `maskedData` to the next
    Point imageSize;                       ///< v rows, h columns
    std::int32_t enlarge = 1;              ///< pixels drawn for one of the image, 1..16
    std::int32_t shrink = 1;               ///< pixels of the image for one drawn, 1..maxShrink
    std::int32_t maxShrink = 1;            ///< the smallest scale offered, 1..16
    Rect srcRect;                          ///< the visible part, image coordinates
    Rect dstRect;                          ///< where it is drawn, dialog coordinates
    std::uint8_t* previewBuffer = nullptr; ///< the visible part, scaled
    std::int32_t previewRowBytes = 0;      ///< from one row of `previewBuffer` to the next
    CTabHandle previewColors = nullptr;
    Boolean previewDirty = 1;        ///< `previewBuffer` must be rebuilt before it is drawn
    ToolType currentTool;            ///< what a click does, held keys considered
    ToolType selectedTool;           ///< what the tool box shows as chosen
    Boolean zoomButtonIsIn = 1;      ///< the zoom button stands for zoomInTool
    Boolean dropperButtonIsPlus = 1; ///< the eyedropper button stands for eyeDropperPlusTool
};

constexpr PreviewItems kIndexedPreviewItems = {
    kIndexedPreviewItem,
    kIndexedZoomTextItem,
    {kIndexedHandItem, kIndexedZoomItem, kIndexedDropperItem}};

/// State of the indexed options dialog. It lies in the frame of the call that runs the dialog, and
/// the dialog's reference constant is its address. Owns nothing.
struct IndexedDialogGlobals : PreviewView {
    IndexedDialogGlobals() : PreviewView(kIndexedPreviewItems, eyeDropperPlusTool) {}

    ExportRecord* exportRecord = nullptr;
    RGBLookUpTable* palette = nullptr; ///< the context's, edited in place on OK
    std::int32_t numColors = 0;        ///< palette entries in use
    std::int32_t maskIndex = -1;       ///< what the masked pixels of `maskedData` carry
    RGBtuple transparentColor = {0, 192, 192, 192}; ///< shown for transparent entries
    std::uint8_t transMap[256] = {};                ///< 1: entry marked transparent by hand
    Boolean needsRedraw = 0;  ///< the filter is to invalidate the drawn items at its next call
    Boolean maskInverted = 0; ///< the option key was down when the channel was chosen
};
