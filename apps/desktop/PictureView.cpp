#include "PictureView.h"

#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace gif89 {
namespace {

constexpr int kSquare = 8;       // of the chequerboard, in widget pixels
constexpr int kKeyDistance = 48; // an arrow key moves as far
constexpr int kWheelStep = 120;  // one notch, in eighths of a degree

bool IsDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

QBrush Chequerboard(bool dark, double ratio) {
    const int side = std::max(1, static_cast<int>(kSquare * ratio));
    QPixmap tile(2 * side, 2 * side);
    tile.fill(dark ? QColor(0x58, 0x58, 0x58) : QColor(0xff, 0xff, 0xff));
    QPainter painter(&tile);
    const QColor other = dark ? QColor(0x70, 0x70, 0x70) : QColor(0xd8, 0xd8, 0xd8);
    painter.fillRect(0, 0, side, side, other);
    painter.fillRect(side, side, side, side, other);
    painter.end();
    return tile;
}

} // namespace

PictureView::PictureView(ViewState& theState, QWidget* parent) : QWidget(parent), state(theState) {
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(120, 90);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(&state, &ViewState::Changed, this, [this] { update(); });
    ShowHand();
}

void PictureView::Show(const ShownImage* image) {
    shown = image;
    update();
}

double PictureView::Zoom() const {
    return Frame().zoom;
}

void PictureView::ZoomBy(int steps) {
    state.ZoomTo(StepZoom(Zoom(), steps), ScreenSize(), ScreenMiddle());
}

void PictureView::ZoomTo(double zoom) {
    state.ZoomTo(zoom, ScreenSize(), ScreenMiddle());
}

QSize PictureView::ScreenSize() const {
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

QPointF PictureView::ScreenMiddle() const {
    return QPointF(ScreenSize().width() / 2.0, ScreenSize().height() / 2.0);
}

void PictureView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    emit Resized();
}

// Drawing

void PictureView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QColor window = palette().color(QPalette::Window);
    painter.fillRect(event->rect(), IsDark(palette()) ? window.darker(130) : window.darker(112));
    if (shown && !shown->IsNull()) DrawPicture(painter);
    if (hasFocus() && reachedByKeys) {
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void PictureView::DrawPicture(QPainter& painter) const {
    const double ratio = devicePixelRatioF();
    const ViewFrame frame = Frame();
    const VisiblePart part = FindVisible(frame, shown->Size(), ScreenSize());
    if (part.source.isEmpty()) return;
    painter.save();
    painter.scale(1 / ratio, 1 / ratio); // from here on in pixels of the screen
    if (shown->HasTransparency()) {
        painter.setBrushOrigin(ToView(frame, ScreenSize(), {0, 0}).toPoint());
        painter.fillRect(part.target, Chequerboard(IsDark(palette()), ratio));
    }
    // Enlarged pixels stay squares.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, frame.zoom < 1);
    const QImage& level = shown->LevelFor(frame.zoom);
    const double across = double(level.width()) / shown->Size().width();
    const double down = double(level.height()) / shown->Size().height();
    const QRectF source(part.source.x() * across, part.source.y() * down,
                        part.source.width() * across, part.source.height() * down);
    painter.drawImage(part.target, level, source);
    painter.restore();
}

// Wheel and mouse

void PictureView::Pan(QPointF distance) {
    state.PanBy(distance * devicePixelRatioF(), ScreenSize());
}

void PictureView::wheelEvent(QWheelEvent* event) {
    event->accept();
    if (!(event->modifiers() & Qt::ControlModifier)) {
        const bool exact = !event->pixelDelta().isNull(); // a touch pad
        QPointF distance = exact ? QPointF(event->pixelDelta())
                                 : QPointF(event->angleDelta()) * kKeyDistance / kWheelStep;
        if ((event->modifiers() & Qt::ShiftModifier) && distance.x() == 0)
            distance = {distance.y(), 0};
        return Pan(distance);
    }
    wheelRest += event->angleDelta().y();
    const int steps = wheelRest / kWheelStep;
    wheelRest -= steps * kWheelStep;
    if (steps != 0)
        state.ZoomTo(StepZoom(Zoom(), steps), ScreenSize(),
                     event->position() * devicePixelRatioF());
}

void PictureView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton && event->button() != Qt::MiddleButton) return;
    panning = true;
    lastPlace = event->position();
    ShowHand();
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    if (!panning) return;
    Pan(event->position() - lastPlace);
    lastPlace = event->position();
}

void PictureView::mouseReleaseEvent(QMouseEvent*) {
    panning = false;
    ShowHand();
}

void PictureView::ShowHand() {
    if (panning)
        setCursor(Qt::ClosedHandCursor);
    else
        setCursor(spaceHeld ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

// Keys

void PictureView::keyPressEvent(QKeyEvent* event) {
    const int page = std::max(kKeyDistance, height() - kKeyDistance);
    switch (event->key()) {
    case Qt::Key_Left:
        return Pan({kKeyDistance, 0});
    case Qt::Key_Right:
        return Pan({-kKeyDistance, 0});
    case Qt::Key_Up:
        return Pan({0, kKeyDistance});
    case Qt::Key_Down:
        return Pan({0, -kKeyDistance});
    case Qt::Key_PageUp:
        return Pan({0.0, double(page)});
    case Qt::Key_PageDown:
        return Pan({0.0, double(-page)});
    case Qt::Key_Space:
        spaceHeld = true;
        return ShowHand();
    default:
        QWidget::keyPressEvent(event);
    }
}

void PictureView::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space || event->isAutoRepeat())
        return QWidget::keyReleaseEvent(event);
    spaceHeld = false;
    ShowHand();
}

void PictureView::focusInEvent(QFocusEvent* event) {
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        reachedByKeys =
            event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    QWidget::focusInEvent(event);
}

void PictureView::focusOutEvent(QFocusEvent* event) {
    spaceHeld = false;
    ShowHand();
    QWidget::focusOutEvent(event);
}

} // namespace gif89
