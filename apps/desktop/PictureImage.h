// Pictures as the toolkit's images: for the screen, from the clipboard, and the image that shows
// where two of them differ.
#pragma once

#include "DecodeGif.h"
#include "Picture.h"

#include <QImage>

#include <cstdint>
#include <vector>

namespace gif89 {

/// The picture's pixels: Format_RGB32, or Format_ARGB32 when it has transparency. Throws Problem
/// without memory.
QImage ImageOf(const Picture& picture);
QImage ImageOf(const DecodedGif& gif);

/// A picture without a file; its format is called "clipboard". Throws Problem as MakePicture does.
Picture PictureOf(const QImage& image);

/// An image at several sizes for drawing: each half as large as the one before, down to a few
/// pixels, so that a small view of a large picture is smooth and fast.
class ShownImage {
  public:
    ShownImage() = default;
    explicit ShownImage(const QImage& image);

    bool IsNull() const { return levels.empty(); }
    QSize Size() const { return levels.empty() ? QSize() : levels.front().size(); }
    bool HasTransparency() const { return !levels.empty() && levels.front().hasAlphaChannel(); }

    /// Of the images not smaller than this zoom of the picture the smallest.
    const QImage& LevelFor(double zoom) const;

  private:
    std::vector<QImage> levels;
};

/// True when the report would count the pixel as kept: the same colour and opacity, or fully
/// transparent in both.
bool SamePixel(QRgb before, QRgb after);

/// Where two images of one size differ: changed pixels tinted from yellow to red as they differ
/// more, all others dark and grey. Format_RGB32.
QImage DifferenceImage(const QImage& before, const QImage& after);

} // namespace gif89
