// The previews' dialogs at work: scale read-out, zooming, tool buttons, presses and held keys. Each
// call asks the plain rules (PreviewGeometry.h, ToolRules.h) and tells the toolbox.
#pragma once

#include "DialogManager.h"
#include "PreviewGeometry.h"
#include "ToolRules.h"

/// Shows the scale through ^0 and ^1 of a static text; single digits on both sides get a space in
/// front, which keeps their width.
void SetZoomFactor(DialogPtr dialog, std::int32_t enlarge, std::int32_t shrink, short item);

/// Zooms by one step about `centre`. Nothing is drawn at the last step. The caller marks the
/// preview buffer as stale.
void DoZoom(DialogPtr dialog, zoomDirection direction, PreviewView* g, const Rect* viewRect,
            Boolean doubleStep, const Point* centre);

/// Shows the preview at 1:1 (kZoomToActualPixels) or as a whole (kZoomToFit) about its present
/// centre. Nothing is drawn when it is so already.
void ZoomOneToOne(DialogPtr dialog, PreviewView* g, short mode);

/// Draws a tool button: a picture resource, when it is there, and a frame. The pen is kept.
void DrawToolItem(DialogPtr dialog, short item, short pictID);
/// Draw procedure of the frames around the tools. The pen is kept.
void DrawToolBoxFrame(DialogPtr dialog, short item);
/// Draw procedure of the tool buttons.
void DrawToolButton(DialogPtr dialog, short item);

/// Makes a tool the selected one and has its button and the one before drawn anew.
void SetCurrentToolItem(DialogPtr dialog, PreviewView* g, ToolType tool);

/// Follows a press on a tool button to its release and chooses the tool. The option key, looked at
/// first, turns a button to its other side; a double click on the zoom button shows 1:1, one on the
/// hand the whole image.
void TrackToolItemHit(DialogPtr dialog, const EventRecord* event, short item, PreviewView* g);

/// Follows a press in the image box to its release with the hand or a zoom tool: drags the view, or
/// zooms about the point of the release. The port must be the dialog.
///
/// @param start where the mouse was pressed, global
void TrackViewPress(DialogPtr dialog, PreviewView* g, Point start);

/// True while the key of a virtual key code, 0..127, is down.
Boolean IsThisKeyDown(short keyCode);
HeldKeys KeysHeld();

/// Over the picture the held keys choose the current tool: returns its cursor there, and kNoCursor
/// for a point, global, that is elsewhere. The port must be the dialog.
short FollowTool(PreviewView* g, short item, Point where, const HeldKeys& keys);

/// Shows a tool's cursor, when it is there. False for kNoCursor.
bool ShowToolCursor(short cursorID);
