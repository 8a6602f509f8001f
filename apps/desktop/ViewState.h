// What several views of pictures of one size show together: one zoom and one place.
#pragma once

#include "ViewGeometry.h"

#include <QObject>

namespace gif89 {

class ViewState : public QObject {
    Q_OBJECT
  public:
    using QObject::QObject;

    /// Starts with another picture: shown whole, but not enlarged.
    void SetPicture(QSize size);
    QSize Picture() const { return picture; }

    /// What a view of that many screen pixels shows.
    ViewFrame FrameFor(QSize view) const;

    /// Shows the whole picture from now on, whatever the size of the view.
    void Fit();
    void ZoomTo(double zoom, QSize view, QPointF inView);
    /// Moves the picture by so many screen pixels.
    void PanBy(QPointF distance, QSize view);

  signals:
    void Changed();

  private:
    enum class Mode : std::uint8_t { notEnlarged, fitted, free };

    void Take(const ViewFrame& next, QSize view);

    QSize picture;
    Mode mode = Mode::notEnlarged;
    ViewFrame frame; ///< in mode free
};

} // namespace gif89
