// The previews' dialogs at work: scale read-out, zooming, tool buttons and held keys. Each call
// asks the plain rules (PreviewGeometry.h, ToolRules.h) and tells the toolbox.
#pragma once

#include "DialogManager.h"
#include "PreviewGeometry.h"
#include "ToolRules.h"

/// Shows the scale through ^0 and ^1 of a static text; single digits on both sides get a space in
/// front, which keeps their width.
void SetZoomFactor(DialogPtr dialog, std::int32_t enlarge, std::int32_t shrink, short item);

/// Items that show a preview's scale.
struct PreviewItems {
    short image;
    short scale;
};

/// Takes over a scale and shows it: finds the view anew and invalidates both items. `Globals` has
/// the members of IndexedDialogGlobals that describe a view.
///
/// @param viewRect rectangle of the image item
/// @param centre   image point to bring to the middle, or null to keep the present one
template <typename Globals>
void ShowZoom(DialogPtr dialog, Globals* g, const ZoomFactors& zoom, const Rect* viewRect,
              const Point* centre, PreviewItems items) {
    g->enlarge = zoom.enlarge;
    g->shrink = zoom.shrink;
    CalculateViewRects(&g->srcRect, &g->dstRect, viewRect, g->shrink, g->enlarge, &g->imageSize,
                       centre);
    SetZoomFactor(dialog, g->enlarge, g->shrink, items.scale);
    InvalItem(dialog, items.image);
}

/// Zooms the indexed preview by one step about `centre`. Nothing is drawn at the last step. The
/// caller marks the preview buffer as stale.
void DoZoom(DialogPtr dialog, zoomDirection direction, IndexedDialogGlobals* g,
            const Rect* viewRect, Boolean doubleStep, const Point* centre);

/// Shows the indexed preview at 1:1 (kZoomToActualPixels) or as a whole (kZoomToFit) about its
/// present centre. Nothing is drawn when it is so already.
void ZoomOneToOne(DialogPtr dialog, IndexedDialogGlobals* g, short mode);

/// Draws a tool button: a picture resource, when it is there, and a frame. The pen is kept.
void DrawToolItem(DialogPtr dialog, short item, short pictID);
/// Draw procedure of the frames around the tools. The pen is kept.
void DrawToolBoxFrame(DialogPtr dialog, short item);
/// Draw procedure of the indexed dialog's tool buttons.
void DrawIndexedToolItem(DialogPtr dialog, short item);

/// Makes a tool the selected one and has its button and the one before drawn anew.
void SetCurrentToolItem(DialogPtr dialog, IndexedDialogGlobals* g, ToolType tool);

/// Follows a press on a tool button of the indexed dialog to its release and chooses the tool. The
/// option key, looked at first, turns a button to its other side; a double click on the zoom button
/// shows 1:1, one on the hand the whole image.
void TrackToolItemHit(DialogPtr dialog, const EventRecord* event, short item,
                      IndexedDialogGlobals* g);

/// True while the key of a virtual key code, 0..127, is down.
Boolean IsThisKeyDown(short keyCode);
