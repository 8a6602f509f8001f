// Turning pictures upright, and what EXIF blocks say about it.
#include "ExifOrientation.h"
#include "MakeExif.h"
#include "Orient.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using gif89::ExifOrientation;
using gif89::Picture;

namespace {

// Every byte differs from its neighbors; an indexed picture gets a channel of the same bytes.
Picture MakeNumbered(Picture::Kind kind, int rows, int columns) {
    Picture picture = gif89::MakePicture(kind, rows, columns);
    std::iota(picture.pixels.get(), picture.pixels.get() + picture.PixelBytes(), std::uint8_t{0});
    if (kind == Picture::Kind::indexed) {
        picture.channels.push_back(
            {"Mask", std::make_unique<std::uint8_t[]>(picture.PixelBytes())});
        std::copy_n(picture.pixels.get(), picture.PixelBytes(), picture.channels[0].bytes.get());
    }
    return picture;
}

Bytes Turn(Picture& picture, int orientation) {
    picture.notes.orientation = orientation;
    TurnUpright(picture);
    Bytes pixels = PixelsOf(picture);
    for (const gif89::Channel& channel : picture.channels)
        EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), channel.bytes.get()))
            << "orientation " << orientation;
    return pixels;
}

} // namespace

TEST(TurnUpright, MovesEveryPixelOfEveryKind) {
    // Stored: 0 1 2
    //         3 4 5
    const std::pair<int, std::vector<int>> cases[] = {
        {3, {0, 1, 2, 3, 4, 5}},                                                   // 1
        {3, {2, 1, 0, 5, 4, 3}}, {3, {5, 4, 3, 2, 1, 0}}, {3, {3, 4, 5, 0, 1, 2}}, // 2 3 4
        {2, {0, 3, 1, 4, 2, 5}}, {2, {3, 0, 4, 1, 5, 2}},                          // 5 6
        {2, {5, 2, 4, 1, 3, 0}}, {2, {2, 5, 1, 4, 0, 3}}};                         // 7 8
    using enum Picture::Kind;
    for (const Picture::Kind kind : {indexed, rgb, rgbAlpha})
        for (int orientation = 1; orientation <= 8; ++orientation) {
            Picture picture = MakeNumbered(kind, 2, 3);
            const int pixelBytes = picture.BytesPerPixel();
            SCOPED_TRACE(testing::Message()
                         << "orientation " << orientation << ", " << pixelBytes << " bytes");
            const auto& [columns, order] = cases[orientation - 1];
            Bytes expected;
            for (const int pixel : order)
                for (int n = 0; n < pixelBytes; ++n)
                    expected.push_back(static_cast<std::uint8_t>(pixel * pixelBytes + n));
            EXPECT_EQ(Turn(picture, orientation), expected);
            EXPECT_EQ(picture.columns, columns);
            EXPECT_EQ(picture.rows, 6 / columns);
            EXPECT_EQ(picture.notes.oriented, orientation > 1);
        }
}

TEST(ExifOrientation, IsReadFromEveryFormOfBlock) {
    for (const ByteOrder order : {ByteOrder::little, ByteOrder::big})
        for (std::uint8_t stated = 0; stated <= 9; ++stated) {
            const Bytes block = MakeExif(stated, order);
            const int expected = stated == 0 || stated == 9 ? 1 : stated;
            EXPECT_EQ(ExifOrientation(block), expected);
            EXPECT_EQ(ExifOrientation(Join({{'E', 'x', 'i', 'f', 0, 0}, block})), expected);
        }
}

TEST(ExifOrientation, IsUprightInDamagedBlocks) {
    Bytes fraction = MakeExif(0, ByteOrder::big);
    fraction[13] = 5; // the type; the value lies at byte 6, whose first half would read as 8
    fraction[21] = 6;
    EXPECT_EQ(ExifOrientation(fraction), 1);
    const Bytes block = MakeExif(6);
    for (std::size_t length = 0; length < 22; ++length) // the entry ends there
        EXPECT_EQ(ExifOrientation({block.data(), length}), 1) << length << " bytes";
}
