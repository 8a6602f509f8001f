// The preview of an RGB export: the picture and the palette as they would be written, in a dialog
// of their own with a view that zooms and scrolls.
#pragma once

#include "DialogManager.h"
#include "EventManager.h"
#include "GIF89RGBExport.h"
#include "GetParameters.h"
#include "IndexedPreview.h"
#include "PreviewTools.h"

constexpr PreviewItems kRGBPreviewItems = {
    kRGBPreviewImageItem, kRGBPreviewScaleItem, {kRGBPreviewHandItem, kRGBPreviewZoomItem, 0}};

/// State of the preview dialog. It lies in the frame of DoPreview, and the dialog's reference
/// constant is its address. Owns nothing.
struct PreviewDialogGlobals : PreviewView {
    explicit PreviewDialogGlobals(GIF89RGBExport* theContext)
        : PreviewView(kRGBPreviewItems, handTool), context(theContext) {}

    GIF89RGBExport* context;
};

// What this dialog shares with the indexed one, under its own names.
inline constexpr auto& DrawRGBImageContent = DrawImageContent;
inline constexpr auto& DrawRGBImageBox = DrawImageBox;
inline constexpr auto& DrawRGBToolItem = DrawToolButton;
inline constexpr auto& DoRGBZoom = DoZoom;

/// Draw procedure of the palette.
void DrawRGBCLUT(DialogPtr dialog, short item);

/// Event filter of the dialog.
Boolean PreviewDialogFilter(DialogPtr dialog, EventRecord* event, short* item);

/// Builds palette and `gifBuffer` as an export with these flags would and shows both in a dialog.
/// What it leaves in `palette`, `numColors` and `transIndex` is the caller's to restore. 0, -1 when
/// the dialog cannot be had, or memFullErr.
short DoPreview(GIF89RGBExport& context, unsigned char exact, unsigned char supplied);
