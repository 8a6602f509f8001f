// Shows a picture over a chequerboard, zoomed and panned with wheel, mouse and keys.
#pragma once

#include "PictureImage.h"
#include "ViewState.h"

#include <QWidget>

namespace gif89 {

class PictureView : public QWidget {
    Q_OBJECT
  public:
    /// Views with the same state move together. The state must outlive the view.
    PictureView(ViewState& state, QWidget* parent = nullptr);

    /// An image of the state's size; null shows nothing. It must stay as it is while it is shown.
    void Show(const ShownImage* image);

    double Zoom() const;
    void ZoomBy(int steps); ///< about the middle
    void ZoomTo(double zoom);

    QSize sizeHint() const override { return {480, 360}; }

  signals:
    void Resized(); ///< what fits has another zoom now

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    QSize ScreenSize() const;
    QPointF ScreenMiddle() const;
    ViewFrame Frame() const { return state.FrameFor(ScreenSize()); }
    void DrawPicture(QPainter& painter) const;
    void Pan(QPointF distance);
    void ShowHand();

    ViewState& state;
    const ShownImage* shown = nullptr;
    bool panning = false;
    bool spaceHeld = false;
    bool reachedByKeys = false; ///< the focus came with the tab key: it is shown
    QPointF lastPlace;          ///< of the mouse while panning, in the widget
    int wheelRest = 0;          ///< eighths of a degree that did not yet make a step
};

} // namespace gif89
