// What is drawn into windows: sharp on fine screens and readable in light and dark themes.
#include "WindowFixture.h"

#include <QImage>
#include <QPalette>

namespace {

const QColor kDarkWindow(0x2B, 0x2B, 0x2B), kLightText(0xE6, 0xE6, 0xE6);

QPalette DarkPalette() {
    QPalette palette(kDarkWindow);
    for (const QPalette::ColorRole text :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(text, kLightText);
        palette.setColor(QPalette::Disabled, text, Qt::gray);
    }
    palette.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
    return palette;
}

constexpr RGBColor kExact = {0x1234, 0x8000, 0xFEDC};

void DrawSamples(DialogPtr dialog, short item) {
    const Rect& rect = dialog->Item(item)->rect;
    EraseRect(&rect);
    FrameRect(&rect);
    const PixPatHandle color = NewPixPat();
    MakeRGBPat(color, &kExact);
    const auto square = [](Point corner) {
        return Rect{corner.v, corner.h, static_cast<short>(corner.v + 20),
                    static_cast<short>(corner.h + 20)};
    };
    const Rect colored = square(CanvasPoint(10, 10)), gray = square(CanvasPoint(40, 10));
    FillCRect(&colored, color);
    DisposePixPat(color);
    FillRect(&gray, &kGrayPattern);
    MoveTo(colored.left, static_cast<short>(colored.bottom + 10));
    LineTo(gray.right, static_cast<short>(colored.bottom + 30));
    TextFont(3);
    TextSize(9);
    MoveTo(colored.left, static_cast<short>(colored.bottom + 50));
    DrawString(reinterpret_cast<ConstStr255Param>("\013small sizes"));
}

class Drawing : public WindowTest {
  protected:
    ~Drawing() override { QApplication::setPalette(QPalette()); }

    void ShowSamples() {
        dialog->Item(kTestCanvas)->draw = DrawSamples;
        Show();
    }
    QImage Grab() { return Window()->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    /// The pixel at a point of the canvas item; its top left one on a fine screen.
    static QColor At(const QImage& image, int h, int v) {
        const Point point = CanvasPoint(static_cast<short>(h), static_cast<short>(v));
        const QPointF place = QPointF(point.h, point.v) * image.devicePixelRatio();
        return image.pixelColor(place.toPoint());
    }
};

TEST_F(Drawing, FollowsTheThemeExceptForColours) {
    ShowSamples();
    const struct {
        const char* name;
        QPalette palette;
    } themes[] = {{"light", QPalette(QColor(0xEF, 0xEF, 0xEF))}, {"dark", DarkPalette()}};
    for (const auto& theme : themes) {
        QApplication::setPalette(theme.palette);
        Settle();
        const QImage image = Grab();
        const QColor paper = theme.palette.color(QPalette::Window);
        const QColor ink = theme.palette.color(QPalette::WindowText);
        EXPECT_EQ(At(image, 0, 0), ink) << theme.name << ": frame";
        EXPECT_EQ(At(image, 5, 5), paper) << theme.name << ": erased";
        EXPECT_EQ(At(image, 20, 20), QColor(0x12, 0x80, 0xFE)) << theme.name << ": colour";
        EXPECT_EQ(At(image, 9, 20), paper) << theme.name << ": left of the colour";
        EXPECT_EQ(At(image, 10, 29), QColor(0x12, 0x80, 0xFE)) << theme.name << ": its corner";
        // The pattern is aligned to the dialog, whose (50, 30) is where this rectangle begins.
        EXPECT_EQ(At(image, 40, 10), ink) << theme.name << ": pattern";
        EXPECT_EQ(At(image, 41, 10), paper) << theme.name << ": pattern";
        EXPECT_EQ(At(image, 41, 11), ink) << theme.name << ": pattern";
        EXPECT_GT(std::abs(ink.lightness() - paper.lightness()), 100) << theme.name;
    }
}

bool IsMadeOfSquares(const QImage& image, const QRect& part, int side) {
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            if (image.pixel(x, y) != image.pixel(x / side * side, y / side * side)) return false;
    return true;
}

TEST_F(Drawing, UsesEveryPixelOfAFineScreen) {
    ShowSamples();
    const QImage image = Grab();
    const int ratio = static_cast<int>(image.devicePixelRatio());
    EXPECT_EQ(image.size(), QSize(380, 320) * ratio);
    EXPECT_EQ(Window()->size(), QSize(380, 320));
    const auto part = [&](int h, int v, int width, int height) {
        const Point corner = CanvasPoint(static_cast<short>(h), static_cast<short>(v));
        return QRect(QPoint(corner.h, corner.v) * ratio, QSize(width, height) * ratio);
    };
    EXPECT_TRUE(IsMadeOfSquares(image, part(0, 0, 70, 35), ratio)) << "shapes lie on whole points";
    if (ratio == 1) return;
    EXPECT_FALSE(IsMadeOfSquares(image, part(10, 68, 60, 14), ratio)) << "text is not enlarged";
}

} // namespace
