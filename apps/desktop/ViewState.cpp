#include "ViewState.h"

#include <algorithm>

namespace gif89 {

void ViewState::SetPicture(QSize size) {
    picture = size;
    mode = Mode::notEnlarged;
    emit Changed();
}

ViewFrame ViewState::FrameFor(QSize view) const {
    if (mode == Mode::free) return Constrain(frame, picture, view);
    const double fitting = FitZoom(picture, view);
    const double zoom = mode == Mode::fitted ? fitting : std::min(fitting, 1.0);
    return Constrain({zoom, {}}, picture, view);
}

void ViewState::Fit() {
    mode = Mode::fitted;
    emit Changed();
}

void ViewState::ZoomTo(double zoom, QSize view, QPointF inView) {
    Take(ZoomAbout(FrameFor(view), zoom, view, inView), view);
}

void ViewState::PanBy(QPointF distance, QSize view) {
    ViewFrame next = FrameFor(view);
    next.centre -= distance / next.zoom;
    Take(next, view);
}

void ViewState::Take(const ViewFrame& next, QSize view) {
    frame = Constrain(next, picture, view);
    mode = Mode::free;
    emit Changed();
}

} // namespace gif89
