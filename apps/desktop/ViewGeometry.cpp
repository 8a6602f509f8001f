#include "ViewGeometry.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace gif89 {
namespace {

constexpr double kUsualZooms[] = {1.0 / 64, 1.0 / 48, 1.0 / 32, 1.0 / 24, 1.0 / 16, 1.0 / 12,
                                  1.0 / 8,  1.0 / 6,  1.0 / 4,  1.0 / 3,  1.0 / 2,  2.0 / 3,
                                  1,        2,        3,        4,        6,        8,
                                  12,       16,       24,       32,       48,       64};
constexpr double kNearly = 1.001; // zooms closer than that are the same

// One direction of Constrain.
double ConstrainSide(double centre, double zoom, int picture, int view) {
    const double half = view / zoom / 2;
    if (2 * half >= picture) return picture / 2.0;
    return std::clamp(centre, half, picture - half);
}

} // namespace

double FitZoom(QSize picture, QSize view) {
    if (picture.isEmpty() || view.isEmpty()) return 1;
    const double zoom =
        std::min(double(view.width()) / picture.width(), double(view.height()) / picture.height());
    return std::clamp(zoom > 1 ? std::floor(zoom) : zoom, kLeastZoom, kMostZoom);
}

double StepZoom(double zoom, int steps) {
    const auto* const first = std::begin(kUsualZooms);
    const auto* const end = std::end(kUsualZooms);
    for (; steps > 0; --steps) {
        const auto* const next = std::upper_bound(first, end, zoom * kNearly);
        if (next != end) zoom = *next;
    }
    for (; steps < 0; ++steps) {
        const auto* const next = std::lower_bound(first, end, zoom / kNearly);
        if (next != first) zoom = *(next - 1);
    }
    return zoom;
}

QPointF ToPicture(const ViewFrame& frame, QSize view, QPointF inView) {
    const QPointF middle(view.width() / 2.0, view.height() / 2.0);
    return frame.centre + (inView - middle) / frame.zoom;
}

QPointF ToView(const ViewFrame& frame, QSize view, QPointF inPicture) {
    const QPointF middle(view.width() / 2.0, view.height() / 2.0);
    return middle + (inPicture - frame.centre) * frame.zoom;
}

ViewFrame ZoomAbout(const ViewFrame& frame, double zoom, QSize view, QPointF inView) {
    const QPointF fixed = ToPicture(frame, view, inView);
    const QPointF middle(view.width() / 2.0, view.height() / 2.0);
    const double next = std::clamp(zoom, kLeastZoom, kMostZoom);
    return {next, fixed - (inView - middle) / next};
}

ViewFrame Constrain(ViewFrame frame, QSize picture, QSize view) {
    frame.centre = {ConstrainSide(frame.centre.x(), frame.zoom, picture.width(), view.width()),
                    ConstrainSide(frame.centre.y(), frame.zoom, picture.height(), view.height())};
    return frame;
}

VisiblePart FindVisible(const ViewFrame& frame, QSize picture, QSize view) {
    const QPointF first = ToPicture(frame, view, {0, 0});
    const QPointF last = ToPicture(frame, view, QPointF(view.width(), view.height()));
    const auto down = [](double place) { return static_cast<int>(std::floor(place)); };
    // One pixel more on every side, since the origin moves to a whole pixel below.
    const QRect seen(QPoint(down(first.x()) - 1, down(first.y()) - 1),
                     QPoint(down(last.x()) + 1, down(last.y()) + 1));
    const QRect source = seen & QRect(QPoint(0, 0), picture);
    if (source.isEmpty()) return {};
    const QPoint origin = ToView(frame, view, {0, 0}).toPoint();
    const QPointF corner = QPointF(source.topLeft()) * frame.zoom + origin;
    return {source, QRectF(corner, QSizeF(source.size()) * frame.zoom)};
}

} // namespace gif89
