#include "Canvas.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace {

constexpr int kUsualPixels = 12, kSmallestPixels = 11; // smaller letters are a strain to read

QRect ToQRect(const Rect& rect) {
    return QRect(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
}

QColor InkColor(const Ink& ink, const QPalette& palette) {
    switch (ink.kind) {
    case Ink::Kind::color:
        return QColor(ink.color.red >> 8, ink.color.green >> 8, ink.color.blue >> 8);
    case Ink::Kind::white:
    case Ink::Kind::background:
        return palette.color(QPalette::Window);
    default:
        return palette.color(QPalette::WindowText);
    }
}

QImage PatternTile(const Ink& ink, const QPalette& palette) {
    const QColor paper = palette.color(QPalette::Window);
    const QColor black = palette.color(QPalette::WindowText);
    QImage tile(8, 8, QImage::Format_RGB32);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            tile.setPixelColor(x, y, ink.pattern[y] & (0x80 >> x) ? black : paper);
    return tile;
}

// Brushes repeat from local (0, 0), as patterns do.
QBrush InkBrush(const Ink& ink, const QPalette& palette) {
    if (ink.kind == Ink::Kind::pattern) return QBrush(PatternTile(ink, palette));
    return QBrush(InkColor(ink, palette));
}

QRect Bounds(Point a, Point b) {
    return QRect(QPoint(std::min(a.h, b.h), std::min(a.v, b.v)),
                 QPoint(std::max(a.h, b.h), std::max(a.v, b.v)));
}

} // namespace

QFont FontFor(short font, short size) {
    QFont face(QStringLiteral("DejaVu Sans"));
    face.setStyleHint(QFont::SansSerif);
    const int usual = font == 3 ? kSmallestPixels : kUsualPixels;
    face.setPixelSize(size == 0 ? usual : std::max<int>(size, kSmallestPixels));
    return face;
}

Canvas::Canvas(QWidget* parent, QSize size, std::function<void()> drawAgainProc)
    : QWidget(parent), drawAgain(std::move(drawAgainProc)) {
    resize(size);
    MakeBacking();
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void Canvas::Fill(const Rect& rect, const Ink& ink) {
    QPainter(&backing).fillRect(ToQRect(rect), InkBrush(ink, palette()));
    update(ToQRect(rect));
}

void Canvas::Line(Point from, Point to, const Ink& ink) {
    const QRect bounds = Bounds(from, to);
    QPainter painter(&backing);
    if (from.h == to.h || from.v == to.v) {
        painter.fillRect(bounds, InkBrush(ink, palette()));
    } else {
        // Slanted lines run from pixel centre to pixel centre; where a point has several pixels,
        // smoothing hides the steps.
        painter.setRenderHint(QPainter::Antialiasing, backing.devicePixelRatio() > 1);
        painter.setPen(QPen(InkBrush(ink, palette()), 1, Qt::SolidLine, Qt::SquareCap));
        painter.drawLine(QPointF(from.h + 0.5, from.v + 0.5), QPointF(to.h + 0.5, to.v + 0.5));
    }
    update(bounds.adjusted(-1, -1, 1, 1));
}

int Canvas::Text(Point start, const std::string& text, short font, short size) {
    const QString characters = QString::fromStdString(text);
    const QFont face = FontFor(font, size);
    const QFontMetrics metrics(face, this);
    QPainter painter(&backing);
    painter.setFont(face);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(start.h, start.v, characters);
    const int width = metrics.horizontalAdvance(characters);
    update(start.h - 2, start.v - metrics.ascent(), width + 4, metrics.height());
    return width;
}

void Canvas::Metrics(short font, short size, short* ascent, short* descent, short* leading) {
    const QFontMetrics metrics(FontFor(font, size), this);
    *ascent = static_cast<short>(metrics.ascent());
    *descent = static_cast<short>(metrics.descent());
    *leading = static_cast<short>(metrics.leading());
}

void Canvas::Image(const Rect& rect, const ColorPixels& pixels) {
    const QImage image(reinterpret_cast<const uchar*>(pixels.pixels.data()), pixels.columns,
                       pixels.rows, qsizetype{4} * pixels.columns, QImage::Format_RGB32);
    const QRect target = ToQRect(rect);
    QPainter painter(&backing);
    // Enlarged pixels stay squares; only a picture with more pixels than the screen is smoothed.
    painter.setRenderHint(QPainter::SmoothPixmapTransform,
                          pixels.columns > target.width() * backing.devicePixelRatio());
    painter.drawImage(target, image);
    update(target);
}

void Canvas::paintEvent(QPaintEvent* event) {
    // The window may have come to a screen of another resolution.
    if (backing.devicePixelRatio() != devicePixelRatioF()) StartAgain();
    QPainter painter(this);
    painter.setClipRegion(event->region());
    painter.drawImage(0, 0, backing);
}

void Canvas::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) StartAgain();
}

void Canvas::MakeBacking() {
    const qreal ratio = devicePixelRatioF();
    backing = QImage((QSizeF(size()) * ratio).toSize(), QImage::Format_RGB32);
    backing.setDevicePixelRatio(ratio);
    backing.fill(palette().color(QPalette::Window));
}

void Canvas::StartAgain() {
    MakeBacking();
    update();
    drawAgain();
}
