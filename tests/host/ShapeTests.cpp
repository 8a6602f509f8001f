// Which way pictures go, and that the way without a loss has none.
#include "Shape.h"

#include <gtest/gtest.h>

namespace gif89 {
namespace {

using Bytes = std::vector<std::uint8_t>;

Picture MakeRow(Picture::Kind kind, const Bytes& bytes) {
    const int step = kind == Picture::Kind::rgb ? 3 : 4;
    Picture picture = MakePicture(kind, 1, static_cast<int>(bytes.size()) / step);
    std::copy(bytes.begin(), bytes.end(), picture.pixels.get());
    return picture;
}

// Neighbouring colours, one step apart in one channel.
Picture MakeColors(int count, bool withTransparentPixel) {
    Bytes bytes;
    for (int i = 0; i < count; ++i) {
        const auto level = static_cast<std::uint8_t>(i);
        bytes.insert(bytes.end(), {level, static_cast<std::uint8_t>(i / 256), 7});
        if (withTransparentPixel) bytes.push_back(255);
    }
    if (withTransparentPixel) bytes.insert(bytes.end(), {1, 2, 3, 0});
    return MakeRow(withTransparentPixel ? Picture::Kind::rgbAlpha : Picture::Kind::rgb, bytes);
}

Bytes OpacitiesOf(const Picture& picture) {
    const std::uint8_t* const opacity = OpacityOf(picture);
    return opacity ? Bytes(opacity, opacity + picture.PixelBytes()) : Bytes();
}

TEST(MakeIndexed, TakesTheColorsInTheOrderTheyAppear) {
    // Yellow, hidden red, blue, yellow, hidden green: the hidden ones are one entry behind both.
    Picture picture = MakeRow(Picture::Kind::rgbAlpha, {255, 255, 0,   255, 255, 0,   0, 0, 0, 0,
                                                        255, 255, 255, 255, 0,   255, 0, 9, 0, 0});
    picture.comment = "kept";
    ASSERT_TRUE(MakeIndexed(picture));
    EXPECT_EQ(picture.colors, 3);
    EXPECT_EQ(Bytes(picture.pixels.get(), picture.pixels.get() + 5), (Bytes{0, 2, 1, 0, 2}));
    const PackedColor table[] = {0xFFFF00, 0x0000FF, 0};
    for (int i = 0; i < 3; ++i) EXPECT_EQ(PackColor(TableEntry(picture.table, i)), table[i]) << i;
    EXPECT_EQ(OpacitiesOf(picture), (Bytes{255, 0, 255, 255, 0}));
    EXPECT_EQ(picture.comment, "kept");
}

TEST(MakeIndexed, TakesAsManyColorsAsATableHoldsAndNoMore) {
    const struct {
        int colors;
        bool transparent, fits;
    } cases[] = {{1, false, true},
                 {256, false, true},
                 {257, false, false},
                 {255, true, true},
                 {256, true, false}};
    for (const auto& c : cases) {
        Picture picture = MakeColors(c.colors, c.transparent);
        const Picture before = CopyPicture(picture);
        EXPECT_EQ(MakeIndexed(picture), c.fits) << c.colors << ' ' << c.transparent;
        if (c.fits) ExpandToRGB(picture);
        ASSERT_EQ(picture.kind, before.kind) << c.colors;
        // What was transparent may have got another colour.
        const std::size_t compared = static_cast<std::size_t>(c.colors * picture.BytesPerPixel());
        EXPECT_TRUE(
            std::equal(before.pixels.get(), before.pixels.get() + compared, picture.pixels.get()))
            << c.colors;
    }
    Picture soft = MakeRow(Picture::Kind::rgbAlpha, {1, 2, 3, 254, 1, 2, 3, 255});
    EXPECT_FALSE(MakeIndexed(soft)) << "an opacity that a table cannot say";
}

TEST(Shape, ChoosesTheWayThatLosesNothing) {
    const struct {
        int colors;
        Shaping how;
        Picture::Kind expected;
    } cases[] = {{200, {.way = Way::rgb}, Picture::Kind::rgb},
                 {200, {.way = Way::indexed}, Picture::Kind::indexed},
                 {200, {.colors = 200}, Picture::Kind::indexed},
                 {200, {.colors = 199}, Picture::Kind::rgb}};
    for (const auto& c : cases) {
        Picture picture = MakeColors(c.colors, false);
        Shape(picture, c.how);
        EXPECT_EQ(picture.kind, c.expected) << c.colors << " colours, at most " << c.how.colors;
    }
    // A palette stays as it is, with entries that nobody uses and the same colour twice.
    Picture palette = MakePicture(Picture::Kind::indexed, 1, 2);
    palette.pixels[0] = 5;
    palette.pixels[1] = 9;
    palette.colors = 256;
    Shape(palette, {.colors = 2});
    EXPECT_EQ(palette.kind, Picture::Kind::indexed);
    EXPECT_EQ(palette.pixels[1], 9);
}

TEST(Shape, AppliesTheThresholdBeforeAnythingElse) {
    const Bytes pixels = {9, 9, 9, 63, 9, 9, 9, 64, 5, 5, 5, 0, 5, 5, 5, 255};
    Picture picture = MakeRow(Picture::Kind::rgbAlpha, pixels);
    EXPECT_TRUE(ShapingLoses(picture, {.alphaThreshold = 64}));
    Shape(picture, {.alphaThreshold = 64});
    ASSERT_EQ(picture.kind, Picture::Kind::indexed) << "two colours are left";
    EXPECT_EQ(OpacitiesOf(picture), (Bytes{0, 255, 0, 255}));
    const Shaping onColor = {.opaque = true, .matte = {0, 1, 2, 3}};
    EXPECT_TRUE(ShapingLoses(picture, onColor));
    Shape(picture, onColor); // a picture with a table, too
    EXPECT_EQ(OpacitiesOf(picture), Bytes());
    EXPECT_EQ(PackColor(TableEntry(picture.table, picture.pixels[0])), 0x010203U);

    picture = MakeRow(Picture::Kind::rgbAlpha, pixels);
    Shape(picture, {.alphaThreshold = 64, .opaque = true, .matte = {0, 1, 2, 3}});
    EXPECT_EQ(OpacitiesOf(picture), Bytes());
    EXPECT_EQ(PackColor(TableEntry(picture.table, picture.pixels[0])), 0x010203U);
}

} // namespace
} // namespace gif89
