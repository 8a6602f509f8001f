// Whole files against bytes written by hand, a plain writer and giflib; failures one by one.
#include "WriteGIF89.h"

#include "FaultInjection.h"
#include "FileManager.h"
#include "FirstDifference.h"
#include "GiflibDecode.h"
#include "MemoryManager.h"
#include "PlainGif.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// An empty file, and what the writer makes of it.
class GifFile {
  public:
    GifFile() {
        const std::string path = folder.Write("a.gif", "");
        EXPECT_EQ(PathToFSSpec(path, &spec), noErr);
    }
    short Write(const PlainImage& image) {
        const Point size = {static_cast<short>(image.rows), static_cast<short>(image.columns)};
        return WriteGIF89(&spec, &size, image.indices.data(), image.columns, image.interlaced,
                          static_cast<short>(image.transparentIndex), &image.table,
                          static_cast<short>(image.colors),
                          image.comment ? image.comment->c_str() : nullptr);
    }
    ByteVector Bytes() const {
        const std::string text = folder.Read("a.gif");
        return ByteVector(text.begin(), text.end());
    }

  private:
    TemporaryFolder folder;
    FSSpec spec;
};

ByteVector WriteToBytes(const PlainImage& image) {
    GifFile file;
    EXPECT_EQ(file.Write(image), noErr);
    return file.Bytes();
}

PlainImage TinyImage(int rows, int columns, ByteVector indices, int colors) {
    PlainImage image;
    image.rows = rows;
    image.columns = columns;
    image.indices = std::move(indices);
    image.colors = colors;
    const auto level = [](int n) { return static_cast<std::uint8_t>(n); };
    for (int i = 0; i < 16; ++i)
        SetTableEntry(image.table, i, {0, level(16 * i + 1), level(16 * i + 2), level(16 * i + 3)});
    return image;
}

TEST(WriteGIF89, WritesOnePixel) {
    const ByteVector expected = {
        'G',  'I', 'F',  '8',  '9', 'a',  1, 0, 1, 0, // signature, 1 x 1
        0x80, 255, 0,                                 // table of 2, background, aspect
        1,    2,   3,    17,   18,  19,               // the table
        0x2C, 0,   0,    0,    0,   1,    0, 1, 0, 0, // descriptor
        2,    2,   0x4C, 0x01, 0,   0x3B,             // codes 4 1 5, three bits each; trailer
    };
    EXPECT_EQ(WriteToBytes(TinyImage(1, 1, {1}, 2)), expected);
    const ByteVector single = WriteToBytes(TinyImage(1, 1, {0}, 1));
    EXPECT_EQ(single[10], 0x6F) << "a table of one colour";
    EXPECT_EQ(single[16], 0x2C);
}

TEST(WriteGIF89, WritesTwoPixelsWithCommentAndTransparentIndex) {
    PlainImage image = TinyImage(1, 2, {3, 0}, 3);
    image.comment = "hi";
    image.transparentIndex = 2;
    const ByteVector expected = {
        'G',  'I',  'F',  '8',  '9', 'a',  2,  0,  1,  0,       // signature, 2 x 1
        0x91, 255,  0,                                          // table of 4
        1,    2,    3,    17,   18,  19,   33, 34, 35, 0, 0, 0, // three colours and black
        0x21, 0xFE, 2,    'h',  'i', 0,                         // comment
        0x21, 0xF9, 4,    1,    0,   0,    2,  0,               // graphic control
        0x2C, 0,    0,    0,    0,   2,    0,  1,  0,  0,       // descriptor
        2,    2,    0x1C, 0x0A, 0,   0x3B,                      // codes 4 3 0 5, three bits each
    };
    EXPECT_EQ(WriteToBytes(image), expected);
}

// Which code comes last, and so how the last block and its last byte end, changes with every pixel.
TEST(WriteGIF89, WritesWhatThePlainWriterWritesAtEveryLength) {
    std::mt19937 random(600);
    for (const int colors : {4, 256})
        for (int pixels = 1; pixels <= 300; ++pixels) {
            const PlainImage image = RandomImage(random, 1, pixels, colors, 1);
            ASSERT_EQ(FirstDifference(WriteToBytes(image), PlainGif(image)), "")
                << colors << " colours, " << pixels << " pixels";
        }
    for (const std::size_t length : {0U, 255U, 256U}) {
        PlainImage image = TinyImage(1, 1, {0}, 2);
        image.comment = std::string(length, '\xE9');
        EXPECT_EQ(FirstDifference(WriteToBytes(image), PlainGif(image)), "")
            << "comment " << length;
    }
}

TEST(WriteGIF89, WritesNoEmptyRestAfterAFullBlock) {
    // With four colours, 278 codes between clear and end code fill a block to the last bit. No
    // pixel brings more than one code, so taking them away one by one meets that number.
    std::mt19937 random(2040);
    PlainImage image = RandomImage(random, 1, 2000, 4, 1);
    const auto codeBits = [&image] {
        int bits = 0;
        for (const PlainCode& code : PlainLzwCodes(image.indices, {2})) bits += code.width;
        return bits;
    };
    while (codeBits() > 255 * 8) image.indices.pop_back();
    ASSERT_EQ(codeBits(), 255 * 8);
    image.columns = static_cast<int>(image.indices.size());
    EXPECT_EQ(WriteToBytes(image).size(), 13u + 12 + 11 + 256 + 2);
}

TEST(WriteGIF89, WritesWhatThePlainWriterWritesAndGiflibReadsIt) {
    std::mt19937 random(4711);
    for (const int colors : {2, 3, 4, 8, 13, 16, 32, 64, 128, 256})
        for (const int runLength : {1, 12, 1000000}) { // noise, runs and flat
            const int rows = 1 + static_cast<int>(random() % 150);
            const int columns = 1 + static_cast<int>(random() % 300);
            PlainImage image = RandomImage(random, rows, columns, colors, runLength);
            image.interlaced = random() % 2 != 0;
            if (random() % 2) image.transparentIndex = colors - 1;
            if (random() % 2) image.comment = std::string(1 + random() % 700, 'x');
            SCOPED_TRACE(testing::Message() << columns << " x " << rows << ", " << colors
                                            << " colours, runs of " << runLength);
            const ByteVector file = WriteToBytes(image);
            EXPECT_EQ(FirstDifference(file, PlainGif(image)), "");

            std::string reason;
            const auto picture = GiflibDecode(file, &reason);
            ASSERT_TRUE(picture) << reason;
            EXPECT_TRUE(picture->rows == rows && picture->columns == columns);
            EXPECT_EQ(FirstDifference(picture->indices, image.indices), "");
            EXPECT_EQ(picture->interlaced, image.interlaced);
            EXPECT_EQ(picture->transparentIndex, image.transparentIndex);
            EXPECT_EQ(picture->comment, image.comment);
            for (int i = 0; i < colors; ++i)
                ASSERT_EQ(PackColor(TableEntry(picture->table, i)),
                          PackColor(TableEntry(image.table, i)))
                    << "entry " << i;
        }
}

TEST(CeilLog2, IsTheBitsOfATable) {
    const std::pair<std::int64_t, int> cases[] = {
        {-5, 0}, {1, 0}, {2, 1}, {5, 3}, {256, 8}, {0x7FFFFFFF, 31}, {std::int64_t{1} << 32, -1}};
    for (const auto& [n, bits] : cases) EXPECT_EQ(CeilLog2(n), bits) << n;
}

TEST(WriteGIF89, EndsTheFileAtTheFirstFailure) {
    std::mt19937 random(300);
    const PlainImage image = RandomImage(random, 500, 501, 256, 1); // 5 times the stream's buffer
    const ByteVector whole = PlainGif(image);
    const long blocks = LiveMemoryBlocks();
    const int writes = static_cast<int>((whole.size() + 65535) / 65536);
    // How often an export comes there, and what it answers when the last time fails.
    const std::tuple<FaultPoint, OSErr, int, OSErr> cases[] = {
        {FaultPoint::openFile, permErr, 1, permErr},
        {FaultPoint::allocate, memFullErr, 3, memFullErr},
        {FaultPoint::writeFile, dskFulErr, writes, noErr}, // the flush when closing,
        {FaultPoint::closeFile, ioErr, 1, noErr}};         // which is the file layer's
    for (const auto& [point, code, times, last] : cases)
        for (int n = 1; n <= times; ++n) {
            SCOPED_TRACE(testing::Message() << "kind " << int(point) << ", time " << n);
            GifFile file;
            FailNthCall(point, n, code);
            const short got = file.Write(image);
            EXPECT_EQ(got, n < times ? code : last);
            EXPECT_EQ(TakeCloseError(), got == noErr ? code : OSErr{noErr});
            EXPECT_EQ(CallsSoFar(point), n) << "went on after the error";
            const ByteVector bytes = file.Bytes();
            EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), whole.begin()));
            EXPECT_EQ(bytes.size() == whole.size(), point == FaultPoint::closeFile);
            ClearFaults();
            EXPECT_EQ(file.Write(image), noErr) << "was left open";
            EXPECT_EQ(LiveMemoryBlocks(), blocks);
            EXPECT_EQ(CallsSoFar(point), times);
        }
}

} // namespace
