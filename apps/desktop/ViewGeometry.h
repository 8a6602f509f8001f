// Where a picture lies in a view: zooming, panning and fitting as plain arithmetic.
#pragma once

#include <QPointF>
#include <QRect>
#include <QSize>

namespace gif89 {

/// What a view shows. A view is measured in the pixels of the screen, so that at a zoom of 1 one
/// pixel of the picture is one of the screen, however fine that is.
struct ViewFrame {
    double zoom = 1; ///< screen pixels for one of the picture, kLeastZoom..kMostZoom
    QPointF centre;  ///< the point of the picture in the middle of the view
};

constexpr double kLeastZoom = 1.0 / 64, kMostZoom = 64;

/// The zoom that shows the whole picture; a small one is enlarged by a whole number.
double FitZoom(QSize picture, QSize view);

/// The next of the usual zooms, larger for positive `steps`.
double StepZoom(double zoom, int steps);

QPointF ToPicture(const ViewFrame& frame, QSize view, QPointF inView);
QPointF ToView(const ViewFrame& frame, QSize view, QPointF inPicture);

/// The frame with another zoom under which the same point of the picture lies at `inView`.
ViewFrame ZoomAbout(const ViewFrame& frame, double zoom, QSize view, QPointF inView);

/// Moves the frame so that nothing beside the picture shows that need not: a side that fits is
/// centred, the others reach to the edges of the view.
ViewFrame Constrain(ViewFrame frame, QSize picture, QSize view);

/// What to draw: a rectangle of whole pixels of the picture and where it goes. Both are empty when
/// nothing is to be seen.
struct VisiblePart {
    QRect source;
    QRectF target; ///< in the view, its origin on a whole pixel
};
VisiblePart FindVisible(const ViewFrame& frame, QSize picture, QSize view);

} // namespace gif89
