// WebP pictures, encoded by the library, whole and wrapped into the chunks of the extended form.
#include "MakeProfile.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <webp/decode.h>
#include <webp/encode.h>

using gif89::Picture;

namespace {

Bytes RandomBytes(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

enum class Coding : bool { lossy, lossless };

// Three or, with alpha, four bytes a pixel.
Bytes MakeWebp(const Bytes& pixels, int columns, int rows, Coding coding) {
    const auto rowBytes = static_cast<int>(pixels.size()) / rows;
    const bool alpha = rowBytes == 4 * columns;
    WebPConfig config;
    WebPConfigInit(&config);
    config.lossless = coding == Coding::lossless ? 1 : 0;
    config.exact = 1; // keeps the colors of transparent pixels
    WebPPicture picture;
    WebPPictureInit(&picture);
    picture.use_argb = config.lossless;
    picture.width = columns;
    picture.height = rows;
    WebPMemoryWriter writer;
    WebPMemoryWriterInit(&writer);
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &writer;
    (alpha ? WebPPictureImportRGBA : WebPPictureImportRGB)(&picture, pixels.data(), rowBytes);
    EXPECT_NE(WebPEncode(&config, &picture), 0);
    WebPPictureFree(&picture);
    Bytes file(writer.mem, writer.mem + writer.size);
    WebPMemoryWriterClear(&writer);
    return file;
}

Bytes LE(std::size_t value, int bytes) {
    Bytes stored;
    for (; bytes > 0; --bytes, value >>= 8) stored.push_back(static_cast<std::uint8_t>(value));
    return stored;
}

Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
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

Bytes PixelChunkOf(const Bytes& file) {
    return {file.begin() + 12, file.end()};
}

Bytes FrameChunk(std::size_t left, std::size_t top, std::size_t columns, std::size_t rows,
                 const Bytes& file) {
    return Chunk("ANMF", Join({LE(left / 2, 3),
                               LE(top / 2, 3),
                               LE(columns - 1, 3),
                               LE(rows - 1, 3),
                               LE(100, 3),
                               {0},
                               PixelChunkOf(file)}));
}

} // namespace

TEST(ReadWebp, PixelsAreThoseOfTheLibrary) {
    const Bytes colors = RandomBytes(3 * 13 * 7, 1), withAlpha = RandomBytes(4 * 13 * 7, 2);
    EXPECT_EQ(PixelsOf(PictureFromBytes(MakeWebp(colors, 13, 7, Coding::lossless))), colors);
    EXPECT_EQ(PixelsOf(PictureFromBytes(MakeWebp(withAlpha, 13, 7, Coding::lossless))), withAlpha);
    for (const Bytes& pixels : {colors, withAlpha}) {
        const Bytes file = MakeWebp(pixels, 13, 7, Coding::lossy);
        const bool alpha = pixels.size() == withAlpha.size();
        int columns = 0, rows = 0;
        std::uint8_t* const decoded =
            (alpha ? WebPDecodeRGBA : WebPDecodeRGB)(file.data(), file.size(), &columns, &rows);
        const Picture picture = PictureFromBytes(file);
        EXPECT_EQ(picture.kind, alpha ? Picture::Kind::rgbAlpha : Picture::Kind::rgb);
        EXPECT_EQ(PixelsOf(picture), Bytes(decoded, decoded + pixels.size()));
        WebPFree(decoded);
    }
    Bytes opaque = MakeWebp(colors, 13, 7, Coding::lossless);
    opaque[24] |= 0x10; // says that there is alpha
    EXPECT_EQ(PixelsOf(PictureFromBytes(opaque)), colors);
}

TEST(ReadWebp, FirstFrameLiesOnItsCanvas) {
    const Bytes small = RandomBytes(3 * 2 * 1, 3), other = RandomBytes(3 * 4 * 3, 4);
    const Bytes frames = Join({Chunk("ANIM", Bytes(6)),
                               FrameChunk(2, 2, 2, 1, MakeWebp(small, 2, 1, Coding::lossless)),
                               FrameChunk(0, 0, 4, 3, MakeWebp(other, 4, 3, Coding::lossless))});
    const Picture picture = PictureFromBytes(Extended(kHasAnimation | kHasAlpha, 5, 4, frames));
    ASSERT_TRUE(picture.rows == 4 && picture.columns == 5);
    Bytes expected(4 * 5 * 4);
    for (std::size_t n = 0; n < 2; ++n) {
        const std::size_t at = 4 * (2 * 5 + 2 + n);
        std::copy_n(small.begin() + static_cast<std::ptrdiff_t>(3 * n), 3,
                    expected.begin() + static_cast<std::ptrdiff_t>(at));
        expected[at + 3] = 255;
    }
    EXPECT_EQ(PixelsOf(picture), expected);
    EXPECT_EQ(picture.notes.pictures, 2);
}

TEST(ReadWebp, ChunksBecomeNotes) {
    const Bytes pixels = {0, 255, 0, 9, 9, 9};
    const Bytes lyingLeft = {
        'I',  'I', 42, 0, 8, 0, 0, 0, 1, 0, // one field: orientation, a word, 6
        0x12, 1,   3,  0, 1, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0};
    const Bytes chunks =
        Join({Chunk("ICCP", MakeRgbProfile(1.0, Primaries::redAndGreenSwapped)),
              PixelChunkOf(MakeWebp(pixels, 2, 1, Coding::lossless)), Chunk("EXIF", lyingLeft)});
    const Picture picture = PictureFromBytes(Extended(kHasProfile | kHasExif, 2, 1, chunks));
    EXPECT_EQ(picture.notes.format, "WebP");
    EXPECT_EQ(picture.notes.orientation, 6);
    EXPECT_TRUE(picture.rows == 2 && picture.columns == 1);
    EXPECT_EQ(picture.notes.profileUse, gif89::InputNotes::ProfileUse::converted);
    EXPECT_GT(picture.pixels[0], 250);
}

TEST(ReadWebp, DamageIsRefusedOrHarmless) {
    const Bytes pixels = RandomBytes(4 * 5 * 4, 5);
    for (const Coding coding : {Coding::lossy, Coding::lossless}) {
        const Bytes file = MakeWebp(pixels, 5, 4, coding);
        EXPECT_GT(CountRefusedDamage(file), 100U);
        Bytes padded = file;
        padded.insert(padded.end(), 9, 0x55);
        EXPECT_EQ(PixelsOf(PictureFromBytes(padded)), PixelsOf(PictureFromBytes(file)));
    }
    const Bytes frames = Join({Chunk("ANIM", Bytes(6)),
                               FrameChunk(2, 0, 5, 4, MakeWebp(pixels, 5, 4, Coding::lossless))});
    EXPECT_GT(CountRefusedDamage(Extended(kHasAnimation | kHasAlpha, 7, 4, frames)), 100U);
}

TEST(ReadWebp, RefusalsSayWhy) {
    const Bytes file = MakeWebp(RandomBytes(12, 6), 2, 2, Coding::lossless);
    EXPECT_EQ(RefusalOf(Bytes(file.begin(), file.end() - 1)),
              "is a damaged WebP picture: the file ends before the picture does");
    EXPECT_EQ(RefusalOf(Chunk("RIFF", Join({{'W', 'E', 'B', 'P'}, Chunk("VP8L", Bytes(20))}))),
              "is a damaged WebP picture: its chunks make no picture");
    const Bytes frame = Join({Chunk("ANIM", Bytes(6)), FrameChunk(0, 0, 2, 2, file)});
    EXPECT_EQ(RefusalOf(Extended(kHasAnimation, 40000, 2, frame)),
              "is 40000 x 2 pixels; sides above 32767 cannot be stored");
}
