// How a picture lies in a preview: zoom steps, the visible part and where it is drawn, and drags.
// Plain arithmetic; nothing here calls the toolbox.
#pragma once

#include "GetParameters.h"

#include <cstdint>

/// Scale of a preview, enlarge : shrink. At most one of the two exceeds 1.
struct ZoomFactors {
    std::int32_t enlarge;   ///< pixels drawn for one of the image, 1..16
    std::int32_t shrink;    ///< pixels of the image for one drawn, 1..maxShrink
    std::int32_t maxShrink; ///< at least 1
};

/// What ZoomToMode and the dialogs' ZoomOneToOne are asked for.
enum : std::int16_t { kNoZoomMode = 0, kZoomToFit = 1, kZoomToActualPixels = 2 };

/// Zooms by one step of the factors or, with `doubleStep`, by halving and doubling them. The factor
/// above 1 goes back to 1 before the other grows. False, with nothing changed, at the last step.
bool StepZoom(ZoomFactors* zoom, zoomDirection direction, bool doubleStep);

/// Goes to 1:1 for kZoomToActualPixels and to the whole image for any other mode. False when
/// that is the scale already.
bool ZoomToMode(ZoomFactors* zoom, short mode);

/// Finds the visible part of the image and its place for a scale.
///
/// @param srcRect   out: the visible part, image coordinates, inside the image; in: only its centre
///                  is used, and only without `centre`
/// @param dstRect   out: where it is drawn, in the coordinates of viewRect
/// @param viewRect  the image box with its frame of one pixel
/// @param shrink    pixels of the image for one drawn, at least 1
/// @param enlarge   pixels drawn for one of the image, at least 1
/// @param imageSize v rows, h columns, 1..32767 each
/// @param centre    image point to bring to the middle as far as the image reaches, or null
///
/// In each direction one of two things holds, where the view is viewRect without its frame: the
/// part fills the view from its top or left on and runs 1 to `enlarge` pixels past its other end;
/// or the part is the whole image, which fits and lies centred, an odd pixel of space going to
/// the bottom or right.
void CalculateViewRects(Rect* srcRect, Rect* dstRect, const Rect* viewRect, std::int32_t shrink,
                        std::int32_t enlarge, const Point* imageSize, const Point* centre);

/// Moves the view with a mouse that was pressed at `start` and is now at `current`, in the same
/// coordinates. The rectangles are those of the moment of the press, copied anew for every call,
/// and become those to show; the view stops at the image's edges.
void HandTrackMouse(Point current, Point start, Rect& srcRect, const Rect& viewRect, Rect& dstRect,
                    const Point& imageSize, std::int32_t enlarge, std::int32_t shrink);
