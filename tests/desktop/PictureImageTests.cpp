#include "PictureImage.h"

#include "MakeReport.h"

#include <gtest/gtest.h>

#include <random>

namespace gif89 {
namespace {

constexpr int kColors = 16;

/// Eight colours far apart, and eight that are next to them.
RGBtuple Color(int i) {
    const auto level = [i](int bit) { return i & bit ? 127 : 0; };
    return {0, static_cast<std::uint8_t>(level(1)), static_cast<std::uint8_t>(level(2)),
            static_cast<std::uint8_t>(level(4) + (i & 8) / 8)};
}

std::uint8_t Opacity(std::mt19937& random) {
    return static_cast<std::uint8_t>(random() % 3 * 127 + random() % 2);
}

// Few colours, so that a good part of the pixels agree.
Picture MakePicture(Picture::Kind kind, std::mt19937& random) {
    Picture picture = MakePicture(kind, 37, 53);
    const bool isIndexed = kind == Picture::Kind::indexed;
    for (std::size_t i = 0; i < picture.PixelBytes(); ++i)
        picture.pixels[i] = kind == Picture::Kind::rgbAlpha && i % 4 == 3
                                ? Opacity(random)
                                : static_cast<std::uint8_t>(random() % 2 * (isIndexed ? 9 : 127));
    if (!isIndexed) return picture;
    picture.colors = kColors;
    for (int i = 0; i < kColors; ++i) SetTableEntry(picture.table, i, Color(i));
    auto opacity = std::make_unique<std::uint8_t[]>(picture.PixelBytes());
    for (std::size_t i = 0; i < picture.PixelBytes(); ++i) opacity[i] = Opacity(random);
    picture.channels.push_back({kTransparencyChannel, std::move(opacity)});
    return picture;
}

DecodedGif MakeGif(const Picture& picture, std::mt19937& random) {
    DecodedGif gif;
    gif.rows = picture.rows;
    gif.columns = picture.columns;
    gif.colors = 2 * kColors;
    gif.transparentIndex = kColors;
    for (int i = 0; i < kColors; ++i) SetTableEntry(gif.table, i, Color(i));
    const std::size_t pixels =
        static_cast<std::size_t>(gif.rows) * static_cast<std::size_t>(gif.columns);
    gif.indices = std::make_unique<std::uint8_t[]>(pixels);
    for (std::size_t i = 0; i < pixels; ++i)
        gif.indices[i] = static_cast<std::uint8_t>(random() % (kColors + 1));
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
            for (int x = 0; x < marked.width(); ++x)
                tinted += marked.pixelColor(x, y).saturation() > 0;
        EXPECT_EQ(tinted, report.changedPixels) << "kind " << static_cast<int>(kind);
        EXPECT_GT(tinted, 0);
        EXPECT_LT(tinted, report.pixels);
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
    } cases[] = {{4, 1000}, {0.6, 1000}, {0.5, 500}, {0.3, 500}, {0.2, 250}, {0.01, 125}};
    for (const auto& c : cases) EXPECT_EQ(image.LevelFor(c.zoom).width(), c.columns) << c.zoom;
}

} // namespace
} // namespace gif89
