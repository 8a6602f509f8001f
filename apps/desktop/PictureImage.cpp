#include "PictureImage.h"

#include "Problem.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace gif89 {
namespace {

constexpr int kSmallestLevel = 64; // no side is halved below this

QImage MakeImage(int columns, int rows, QImage::Format format) {
    QImage image(columns, rows, format);
    if (image.isNull()) throw Problem("there is not enough memory to show the picture");
    return image;
}

QRgb* RowOf(QImage& image, int y) {
    return reinterpret_cast<QRgb*>(image.scanLine(y));
}

const QRgb* RowOf(const QImage& image, int y) {
    return reinterpret_cast<const QRgb*>(image.constScanLine(y));
}

std::array<QRgb, 256> ColorsOf(const RGBLookUpTable& table) {
    std::array<QRgb, 256> colors;
    for (int i = 0; i < 256; ++i) {
        const RGBtuple color = TableEntry(table, i);
        colors[static_cast<std::size_t>(i)] = qRgb(color.red, color.green, color.blue);
    }
    return colors;
}

QImage ImageOfIndexed(const Picture& picture) {
    const std::uint8_t* opacity = OpacityOf(picture);
    const auto colors = ColorsOf(picture.table);
    QImage image = MakeImage(picture.columns, picture.rows,
                             opacity ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    const std::uint8_t* index = picture.pixels.get();
    for (int y = 0; y < picture.rows; ++y) {
        QRgb* to = RowOf(image, y);
        for (int x = 0; x < picture.columns; ++x, ++index) {
            QRgb color = colors[*index];
            if (opacity) color = (color & RGB_MASK) | QRgb(*opacity++) << 24;
            *to++ = color;
        }
    }
    return image;
}

int LargestDifference(QRgb before, QRgb after) {
    return std::max({std::abs(qRed(before) - qRed(after)), std::abs(qGreen(before) - qGreen(after)),
                     std::abs(qBlue(before) - qBlue(after)),
                     std::abs(qAlpha(before) - qAlpha(after))});
}

int DimmedLevel(QRgb color) {
    return 24 + qGray(color) * qAlpha(color) / 255 / 3;
}

QRgb DimmedColor(QRgb color) {
    const int level = DimmedLevel(color);
    return qRgb(level, level, level);
}

// Differences are mostly small, so that the scale ends at a quarter of the range; the smallest
// still shows. The picture shines through, or nothing could be found in a photograph.
QRgb ChangedColor(QRgb before, QRgb after) {
    constexpr int kScale = 64, kLeast = 16;
    const int difference = std::min(LargestDifference(before, after), kScale);
    const int weight = kLeast + difference * (kScale - kLeast) / kScale;
    const int dimmed = DimmedLevel(after);
    const auto mix = [&](int tint) {
        return (dimmed * (kScale - weight) + tint * weight) / kScale;
    };
    return qRgb(mix(255), mix(210 - difference * 3), mix(difference));
}

} // namespace

QImage ImageOf(const Picture& picture) {
    if (picture.kind == Picture::Kind::indexed) return ImageOfIndexed(picture);
    const bool alpha = picture.kind == Picture::Kind::rgbAlpha;
    QImage image = MakeImage(picture.columns, picture.rows,
                             alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    const std::uint8_t* pixel = picture.pixels.get();
    const int step = picture.BytesPerPixel();
    for (int y = 0; y < picture.rows; ++y) {
        QRgb* to = RowOf(image, y);
        for (int x = 0; x < picture.columns; ++x, pixel += step)
            *to++ = qRgba(pixel[0], pixel[1], pixel[2], alpha ? pixel[3] : 255);
    }
    return image;
}

QImage ImageOf(const DecodedGif& gif) {
    auto colors = ColorsOf(gif.table);
    const bool transparent = gif.transparentIndex >= 0;
    if (transparent) colors[static_cast<std::size_t>(gif.transparentIndex)] &= RGB_MASK;
    QImage image = MakeImage(gif.columns, gif.rows,
                             transparent ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    const std::uint8_t* index = gif.indices.get();
    for (int y = 0; y < gif.rows; ++y) {
        QRgb* to = RowOf(image, y);
        for (int x = 0; x < gif.columns; ++x) *to++ = colors[*index++];
    }
    return image;
}

Picture PictureOf(const QImage& image) {
    const bool alpha = image.hasAlphaChannel();
    Picture picture = MakePicture(alpha ? Picture::Kind::rgbAlpha : Picture::Kind::rgb,
                                  image.height(), image.width());
    const QImage plain =
        image.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    if (plain.isNull()) throw Problem("there is not enough memory for the picture");
    for (int y = 0; y < picture.rows; ++y)
        std::copy_n(plain.constScanLine(y), picture.RowBytes(),
                    picture.pixels.get() + static_cast<std::size_t>(y) * picture.RowBytes());
    DropOpaqueAlpha(picture);
    picture.notes.format = "clipboard";
    picture.notes.rounded = image.depth() > 32;
    return picture;
}

ShownImage::ShownImage(const QImage& image) {
    levels.push_back(image.hasAlphaChannel()
                         ? image.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                         : image);
    while (std::min(levels.back().width(), levels.back().height()) >= 2 * kSmallestLevel)
        levels.push_back(levels.back().scaled(levels.back().size() / 2, Qt::IgnoreAspectRatio,
                                              Qt::SmoothTransformation));
    if (levels.back().isNull()) throw Problem("there is not enough memory to show the picture");
}

const QImage& ShownImage::LevelFor(double zoom) const {
    std::size_t level = 0;
    while (level + 1 < levels.size() && levels[level + 1].width() >= zoom * Size().width()) ++level;
    return levels[level];
}

bool SamePixel(QRgb before, QRgb after) {
    return before == after || (qAlpha(before) == 0 && qAlpha(after) == 0);
}

QImage DifferenceImage(const QImage& before, const QImage& after) {
    QImage marked = MakeImage(before.width(), before.height(), QImage::Format_RGB32);
    for (int y = 0; y < before.height(); ++y) {
        const QRgb* const was = RowOf(before, y);
        const QRgb* const is = RowOf(after, y);
        QRgb* const to = RowOf(marked, y);
        for (int x = 0; x < before.width(); ++x)
            to[x] = SamePixel(was[x], is[x]) ? DimmedColor(is[x]) : ChangedColor(was[x], is[x]);
    }
    return marked;
}

} // namespace gif89
