#include "PictureImage.h"

#include "MakeReport.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace gif89 {
namespace {

// Few colours and few opacities, so that a good part of the pixels agree.
Picture MakePicture(Picture::Kind kind, std::mt19937& random) {
    Picture picture = MakePicture(kind, 37, 53);
    for (std::size_t i = 0; i < picture.PixelBytes(); ++i)
        picture.pixels[i] = static_cast<std::uint8_t>(random() % 3 * 127 + random() % 2);
    if (kind != Picture::Kind::indexed) return picture;
    picture.colors = 256;
    for (int i = 0; i < 256; ++i)
        SetTableEntry(picture.table, i, UnpackColor(random() % (1U << 24)));
    auto opacity = std::make_unique<std::uint8_t[]>(picture.PixelBytes());
    for (std::size_t i = 0; i < picture.PixelBytes(); ++i)
        opacity[i] = static_cast<std::uint8_t>(random() % 3 * 127);
    picture.channels.push_back({kTransparencyChannel, std::move(opacity)});
    return picture;
}

DecodedGif MakeGif(const Picture& picture, std::mt19937& random) {
    DecodedGif gif;
    gif.rows = picture.rows;
    gif.columns = picture.columns;
    gif.colors = 32;
    gif.transparentIndex = 31;
    const std::size_t pixels =
        static_cast<std::size_t>(gif.rows) * static_cast<std::size_t>(gif.columns);
    gif.indices = std::make_unique<std::uint8_t[]>(pixels);
    const QImage image = ImageOf(picture);
    for (int i = 0; i < 31; ++i) { // colours of the picture, so that some pixels are met
        const QRgb color = image.pixel(i, i);
        SetTableEntry(gif.table, i, UnpackColor(color & 0xFFFFFF));
    }
    for (std::size_t i = 0; i < pixels; ++i) {
        gif.indices[i] = static_cast<std::uint8_t>(random() % 32);
        const QRgb color = image.pixel(int(i) % gif.columns, int(i) / gif.columns);
        for (int entry = 0; entry < 31 && random() % 4 != 0; ++entry)
            if (PackColor(TableEntry(gif.table, entry)) == (color & 0xFFFFFF))
                gif.indices[i] = static_cast<std::uint8_t>(entry);
    }
    return gif;
}

TEST(DifferenceImage, MarksAsManyPixelsAsTheReportCounts) {
    std::mt19937 random(11);
    for (const auto kind : {Picture::Kind::rgb, Picture::Kind::rgbAlpha, Picture::Kind::indexed}) {
        const Picture picture = MakePicture(kind, random);
        const DecodedGif gif = MakeGif(picture, random);
        const ExportReport report = MakeReport(picture, gif);
        const QImage marked = DifferenceImage(ImageOf(picture), ImageOf(gif));
        std::int64_t tinted = 0;
        for (int y = 0; y < marked.height(); ++y)
            for (int x = 0; x < marked.width(); ++x) {
                const QColor color = marked.pixelColor(x, y);
                tinted += color.saturation() > 0;
            }
        EXPECT_EQ(tinted, report.changedPixels) << "kind " << static_cast<int>(kind);
        EXPECT_GT(tinted, 0);
        EXPECT_LT(tinted, report.pixels);
        EXPECT_EQ(CountColors(ImageOf(picture)), report.sourceColors);
    }
}

TEST(PictureOf, GivesBackThePixelsOfAnImage) {
    std::mt19937 random(12);
    for (const auto kind : {Picture::Kind::rgb, Picture::Kind::rgbAlpha}) {
        const Picture picture = MakePicture(kind, random);
        const Picture back = PictureOf(ImageOf(picture));
        ASSERT_EQ(back.kind, kind);
        EXPECT_TRUE(std::equal(picture.pixels.get(), picture.pixels.get() + picture.PixelBytes(),
                               back.pixels.get()));
    }
    QImage opaque(3, 2, QImage::Format_ARGB32);
    opaque.fill(Qt::red);
    EXPECT_EQ(PictureOf(opaque).kind, Picture::Kind::rgb);
}

TEST(ShownImage, TakesTheSmallestLevelThatIsLargeEnough) {
    const ShownImage image(QImage(1000, 600, QImage::Format_RGB32));
    const struct {
        double zoom;
        int columns;
    } cases[] = {{4, 1000},  {1, 1000},  {0.6, 1000}, {0.5, 500},
                 {0.3, 500}, {0.2, 250}, {0.01, 125}};
    for (const auto& c : cases) EXPECT_EQ(image.LevelFor(c.zoom).width(), c.columns) << c.zoom;
}

} // namespace
} // namespace gif89
