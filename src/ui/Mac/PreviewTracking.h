// Presses in a preview's image box, followed to their release. `Globals` has the members of
// IndexedDialogGlobals that describe a view; the current port is the dialog.
#pragma once

#include "EventManager.h"
#include "ItemDrawing.h"
#include "LocalDialogUtilities.h"
#include "PreviewGeometry.h"

#include <optional>

/// Drags the view with the hand. Every place of the mouse is shown by `draw`, called with the
/// state and the rectangle of the image item; the state is that of the drag, so that the box may be
/// drawn at any time.
///
/// @param start where the mouse was pressed, global
template <class Globals, class Draw>
void TrackHand(DialogPtr dialog, Globals* g, short imageItem, Point start, Draw draw) {
    const Rect source = g->srcRect, place = g->dstRect;
    Rect view = ItemRect(dialog, imageItem);
    const auto show = [&](Point mouse) {
        g->srcRect = source;
        g->dstRect = place;
        HandTrackMouse(mouse, start, g->srcRect, view, g->dstRect, g->imageSize, g->enlarge,
                       g->shrink);
        g->previewDirty = 1;
        draw(g, &view);
    };
    std::optional<Point> shown;
    do {
        Point mouse;
        GetMouse(&mouse);
        LocalToGlobal(&mouse);
        if (shown == mouse) continue;
        show(mouse);
        shown = mouse;
    } while (StillDown());
    EventRecord release;
    if (GetNextEvent(mUpMask, &release)) show(release.where);
}

/// Waits for the release and, when it lies in the image item, calls `zoom` with the item's
/// rectangle and the image point to zoom about.
template <class Globals, class Zoom>
void TrackZoomClick(DialogPtr dialog, Globals* g, short imageItem, Zoom zoom) {
    while (StillDown()) {
    }
    EventRecord release;
    short item = 0;
    Point offset;
    Rect view;
    if (!GetNextEvent(mUpMask, &release) ||
        !DialogItemPoint(&release.where, dialog, &item, &offset, &view) || item != imageItem)
        return;
    // Deliberate: the offset counts from the item's corner and not from where the picture begins,
    // so that a click on a small picture in the middle of the box zooms about a point beside it.
    const auto inImage = [&](int distance, int first) {
        return static_cast<std::int16_t>(distance * g->shrink / g->enlarge + first);
    };
    zoom(view, Point{inImage(offset.v, g->srcRect.top), inImage(offset.h, g->srcRect.left)});
    g->previewDirty = 1;
}
