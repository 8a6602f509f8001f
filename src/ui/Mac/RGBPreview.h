// The preview of an RGB export: the picture and the palette as they would be written, in a dialog
// of their own with a view that zooms and scrolls.
#pragma once

#include "DialogManager.h"
#include "EventManager.h"
#include "GIF89RGBExport.h"
#include "GetParameters.h"

/// State of the preview dialog. It lies in the frame of DoPreview, and the dialog's reference
/// constant is its address. Owns nothing.
struct PreviewDialogGlobals {
    GIF89RGBExport* context = nullptr;
    std::uint8_t* previewBuffer = nullptr; ///< the visible part, scaled
    std::int32_t previewRowBytes = 0;      ///< from one row of `previewBuffer` to the next
    Point imageSize;                       ///< v rows, h columns
    std::int32_t enlarge = 1;              ///< pixels drawn for one of the image, 1..16
    std::int32_t shrink = 1;               ///< pixels of the image for one drawn, 1..maxShrink
    std::int32_t maxShrink = 1;            ///< 1..16
    Rect srcRect;                          ///< the visible part, image coordinates
    Rect dstRect;                          ///< where it is drawn, dialog coordinates
    ToolType currentTool = handTool;       ///< what a click does, held keys considered
    ToolType selectedTool = handTool;      ///< what the tool box shows as chosen
    CTabHandle previewColors = nullptr;
    Boolean previewDirty = 1;   ///< `previewBuffer` must be rebuilt before it is drawn
    Boolean zoomButtonIsIn = 1; ///< the zoom button stands for zoomInTool
};

/// Sets `maxShrink` to the reduction that shows the whole image, at most 16, and `srcRect` to the
/// part of the image that is left when what does not fit then is cut off at the bottom and right.
///
/// @param box size of the image box, v rows, h columns, at least 1 each
void FitPreview(PreviewDialogGlobals* g, Point box);

/// Draws the visible part with a frame around it and one around the box, building the preview
/// buffer first when it is stale.
void DrawRGBImageContent(PreviewDialogGlobals* g, Rect* viewRect);

// Draw procedures of the image box, the palette and the tool buttons
void DrawRGBImageBox(DialogPtr dialog, short item);
void DrawRGBCLUT(DialogPtr dialog, short item);
void DrawRGBToolItem(DialogPtr dialog, short item);

/// Zooms by one step about `centre`. Nothing is drawn at the last step. The caller marks the
/// preview buffer as stale.
void DoRGBZoom(DialogPtr dialog, zoomDirection direction, PreviewDialogGlobals* g,
               const Rect* viewRect, Boolean doubleStep, const Point* centre);
/// Shows the preview at 1:1 (kZoomToActualPixels) or as a whole (kZoomToFit).
void ZoomOneToOne(DialogPtr dialog, PreviewDialogGlobals* g, short mode);
/// Follows a press on a tool button to its release and chooses the tool.
void TrackToolItemHit(DialogPtr dialog, const EventRecord* event, short item,
                      PreviewDialogGlobals* g);

/// Event filter of the dialog.
Boolean PreviewDialogFilter(DialogPtr dialog, EventRecord* event, short* item);

/// Builds palette and `gifBuffer` as an export with these flags would and shows both in a dialog.
/// What it leaves in `palette`, `numColors` and `transIndex` is the caller's to restore. 0, -1 when
/// the dialog cannot be had, or memFullErr.
short DoPreview(GIF89RGBExport& context, unsigned char exact, unsigned char supplied);
