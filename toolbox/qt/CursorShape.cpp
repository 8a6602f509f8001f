#include "CursorShape.h"

#include <QImage>
#include <QPixmap>

#include <cmath>

namespace {

constexpr int kSide = 16;

QImage Draw(const Cursor& cursor) {
    QImage image(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            const int bit = 0x8000 >> x;
            const QRgb shown = cursor.mask[y] & bit ? 0xFFFFFFFF : 0x00000000;
            // A data bit outside the mask would invert the screen; black is the nearest we have.
            image.setPixel(x, y, cursor.data[y] & bit ? 0xFF000000 : shown);
        }
    return image;
}

} // namespace

QCursor MakeCursor(const Cursor* cursor, qreal devicePixelRatio) {
    if (!cursor) return QCursor(Qt::ArrowCursor);
    // Whole steps keep the pixels square.
    const int scale = std::max(1, static_cast<int>(std::lround(devicePixelRatio)));
    QPixmap pixmap = QPixmap::fromImage(Draw(*cursor).scaled(kSide * scale, kSide * scale));
    pixmap.setDevicePixelRatio(scale);
    return QCursor(pixmap, cursor->hotSpot.h, cursor->hotSpot.v);
}
