// WebP pictures, encoded by the library, whole and wrapped into the chunks of the extended form.
#include "MakeExif.h"
#include "MakeProfile.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <webp/decode.h>
#include <webp/encode.h>

using gif89::Picture;

namespace {

enum class Coding : bool { lossy, lossless };

// Three or, with alpha, four bytes a pixel. The encoder gives transparent pixels another colour.
Bytes MakeWebp(const Bytes& pixels, int columns, int rows, Coding coding) {
    const auto rowBytes = static_cast<int>(pixels.size()) / rows;
    const bool alpha = rowBytes == 4 * columns;
    std::uint8_t* memory = nullptr;
    const std::size_t size = coding == Coding::lossless
                                 ? (alpha ? WebPEncodeLosslessRGBA : WebPEncodeLosslessRGB)(
                                       pixels.data(), columns, rows, rowBytes, &memory)
                                 : (alpha ? WebPEncodeRGBA : WebPEncodeRGB)(
                                       pixels.data(), columns, rows, rowBytes, 75, &memory);
    const Bytes file(memory, memory + size);
    WebPFree(memory);
    return file;
}

Bytes Chunk(const std::string& name, const Bytes& content) {
    return Join({Bytes(name.begin(), name.end()), LE(content.size(), 4), content,
                 Bytes(content.size() % 2)});
}

constexpr std::uint8_t kHasAnimation = 2, kHasExif = 8, kHasAlpha = 16, kHasProfile = 32;

Bytes Extended(std::uint8_t flags, std::size_t columns, std::size_t rows, const Bytes& chunks) {
    const Bytes canvas = Join({LE(flags, 4), LE(columns - 1, 3), LE(rows - 1, 3)});
    return Chunk("RIFF", Join({{'W', 'E', 'B', 'P'}, Chunk("VP8X", canvas), chunks}));
}

// Three or four bytes a pixel, stored without loss, as the chunk that holds them.
Bytes PixelChunk(const Bytes& pixels, int columns, int rows) {
    const Bytes file = MakeWebp(pixels, columns, rows, Coding::lossless);
    return {file.begin() + 12, file.end()};
}

// A frame of columns x rows, `corner` pixels from the left and from the top.
Bytes FrameChunk(std::size_t corner, const Bytes& pixels, int columns, int rows) {
    const Bytes place = LE(corner / 2, 3), right = LE(static_cast<std::size_t>(columns) - 1, 3),
                bottom = LE(static_cast<std::size_t>(rows) - 1, 3), milliseconds = LE(100, 3);
    return Chunk("ANMF", Join({place, place, right, bottom, milliseconds, Bytes(1),
                               PixelChunk(pixels, columns, rows)}));
}

const Bytes kAnimation = Chunk("ANIM", Bytes(6));

} // namespace

TEST(ReadWebp, PixelsAreThoseOfTheLibrary) {
    const Bytes colors = RandomBytes(3 * 13 * 7, 1);
    Bytes withAlpha = RandomBytes(4 * 13 * 7, 2);
    for (std::size_t n = 3; n < withAlpha.size(); n += 4) withAlpha[n] |= 1;
    for (const Bytes& pixels : {colors, withAlpha}) {
        const bool alpha = pixels.size() == withAlpha.size();
        EXPECT_EQ(PixelsOf(PictureFromBytes(MakeWebp(pixels, 13, 7, Coding::lossless))), pixels);
        const Bytes file = MakeWebp(pixels, 13, 7, Coding::lossy);
        std::uint8_t* const decoded =
            (alpha ? WebPDecodeRGBA : WebPDecodeRGB)(file.data(), file.size(), nullptr, nullptr);
        EXPECT_EQ(PixelsOf(PictureFromBytes(file)), Bytes(decoded, decoded + pixels.size()));
        WebPFree(decoded);
    }
    Bytes opaque = MakeWebp(colors, 13, 7, Coding::lossless);
    opaque[24] |= 0x10; // says that there is alpha
    EXPECT_EQ(PixelsOf(PictureFromBytes(opaque)), colors);
}

TEST(ReadWebp, FirstFrameLiesOnItsCanvas) {
    const Bytes small = {1, 2, 3, 4, 5, 6}, other = RandomBytes(3 * 4 * 3, 4);
    const Bytes frames = Join({kAnimation, FrameChunk(2, small, 2, 1), FrameChunk(0, other, 4, 3)});
    const Picture picture = PictureFromBytes(Extended(kHasAnimation | kHasAlpha, 5, 4, frames));
    Bytes expected(4 * 5 * 4);
    const Bytes frame = {1, 2, 3, 255, 4, 5, 6, 255};
    std::copy(frame.begin(), frame.end(), expected.begin() + 4 * (2 * 5 + 2));
    EXPECT_EQ(picture.columns, 5);
    EXPECT_EQ(PixelsOf(picture), expected);
    EXPECT_EQ(picture.notes.pictures, 2);
    for (const int missing : {1, 20}) { // of the second frame
        const Bytes file = Extended(kHasAnimation | kHasAlpha, 5, 4, frames);
        const Picture cut = PictureFromBytes(Bytes(file.begin(), file.end() - missing));
        EXPECT_EQ(PixelsOf(cut), expected);
        EXPECT_EQ(cut.notes.pictures, 2);
        EXPECT_EQ(cut.notes.warnings.size(), 1U);
    }
}

TEST(ReadWebp, ChunksBecomeNotes) {
    const Bytes chunks = Join({Chunk("ICCP", MakeRgbProfile(1.0, Primaries::redAndGreenSwapped)),
                               PixelChunk({0, 255, 0, 9, 9, 9}, 2, 1), Chunk("EXIF", MakeExif(6))});
    const Picture picture = PictureFromBytes(Extended(kHasProfile | kHasExif, 2, 1, chunks));
    EXPECT_EQ(picture.notes.format, "WebP");
    EXPECT_EQ(picture.notes.orientation, 6);
    EXPECT_TRUE(picture.rows == 2 && picture.columns == 1);
    EXPECT_EQ(picture.notes.profileUse, gif89::InputNotes::ProfileUse::converted);
    EXPECT_GT(picture.pixels[0], 250);
}

TEST(ReadWebp, DamageIsRefusedOrHarmless) {
    const Bytes pixels = RandomBytes(4 * 5 * 4, 5);
    for (const Bytes& file :
         {MakeWebp(pixels, 5, 4, Coding::lossy), MakeWebp(pixels, 5, 4, Coding::lossless)}) {
        EXPECT_GT(CountNoticedDamage(file), 100U);
        const Bytes padded = Join({file, Bytes(9, 0x55)});
        EXPECT_EQ(PixelsOf(PictureFromBytes(padded)), PixelsOf(PictureFromBytes(file)));
    }
    const Bytes frames = Join({kAnimation, FrameChunk(2, pixels, 5, 4)});
    EXPECT_GT(CountNoticedDamage(Extended(kHasAnimation | kHasAlpha, 7, 6, frames)), 100U);
}

TEST(ReadWebp, RefusalsSayWhy) {
    const Bytes pixels = RandomBytes(12, 6), file = MakeWebp(pixels, 2, 2, Coding::lossless);
    EXPECT_EQ(RefusalOf(Bytes(file.begin(), file.end() - 1)),
              "is a damaged WebP picture: the file ends before the picture does");
    EXPECT_EQ(RefusalOf(Chunk("RIFF", Join({{'W', 'E', 'B', 'P'}, Chunk("VP8L", Bytes(20))}))),
              "is a damaged WebP picture: its chunks make no picture");
    const Bytes frame = Join({kAnimation, FrameChunk(0, pixels, 2, 2)});
    EXPECT_EQ(RefusalOf(Extended(kHasAnimation, 40000, 2, frame)),
              "is 40000 x 2 pixels; sides above 32767 cannot be stored");
}
