// Whole files against bytes written by hand, a plain writer and giflib; failures one by one.
#include "WriteGIF89.h"

#include "FaultInjection.h"
#include "FileManager.h"
#include "FirstDifference.h"
#include "GiflibDecode.h"
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
        return WriteRows(image, image.indices.data(), image.columns);
    }
    short WriteRows(const PlainImage& image, const std::uint8_t* pixels, int rowBytes) {
        const Point size = {static_cast<short>(image.rows), static_cast<short>(image.columns)};
        return WriteGIF89(&spec, &size, pixels, rowBytes, image.interlaced,
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
    for (int i = 0; i < 256; ++i) {
        const auto level = static_cast<std::uint8_t>(16 * i + 1);
        SetTableEntry(
            image.table, i,
            {0, level, static_cast<std::uint8_t>(level + 1), static_cast<std::uint8_t>(level + 2)});
    }
    return image;
}

TEST(WriteGIF89, WritesOnePixel) {
    const ByteVector expected = {
        'G',  'I', 'F',  '8',  '9', 'a', 1, 0, 1, 0, // signature, 1 x 1
        0x80, 255, 0,                                // table of 2, background, aspect
        1,    2,   3,    17,   18,  19,              // the table
        0x2C, 0,   0,    0,    0,   1,   0, 1, 0, 0, // descriptor
        2,    2,   0x4C, 0x01, 0,                    // codes 4 1 5, three bits each
        0x3B,
    };
    EXPECT_EQ(WriteToBytes(TinyImage(1, 1, {1}, 2)), expected);
}

TEST(WriteGIF89, WritesTwoPixelsWithCommentAndTransparentIndex) {
    PlainImage image = TinyImage(1, 2, {3, 0}, 3);
    image.comment = "hi";
    image.transparentIndex = 2;
    const ByteVector expected = {
        'G',  'I',  'F',  '8',  '9', 'a', 2,  0,  1,  0,       // signature, 2 x 1
        0x91, 255,  0,                                         // table of 4
        1,    2,    3,    17,   18,  19,  33, 34, 35, 0, 0, 0, // three colours and black
        0x21, 0xFE, 2,    'h',  'i', 0,                        // comment
        0x21, 0xF9, 4,    1,    0,   0,   2,  0,               // graphic control
        0x2C, 0,    0,    0,    0,   2,   0,  1,  0,  0,       // descriptor
        2,    2,    0x1C, 0x0A, 0,                             // codes 4 3 0 5, three bits each
        0x3B,
    };
    EXPECT_EQ(WriteToBytes(image), expected);
}

TEST(WriteGIF89, WritesInterlacedRowsInFourPasses) {
    PlainImage image = TinyImage(5, 1, {0, 1, 2, 3, 0}, 4);
    image.interlaced = true;
    // Rows 0 4 2 1 3 hold 0 0 2 1 3. Code 8 is assigned after the 2, so that the rest has four
    // bits: 4 0 0 2 in three, 1 3 5 in four.
    const ByteVector expected = {
        'G',  'I', 'F',  '8',  '9',  'a', 1,  0,  5,  0,            // signature, 1 x 5
        0x91, 255, 0,                                               // table of 4
        1,    2,   3,    17,   18,   19,  33, 34, 35, 49,   50, 51, // the table
        0x2C, 0,   0,    0,    0,    1,   0,  5,  0,  0x40,         // descriptor, interlaced
        2,    3,   0x04, 0x14, 0x53, 0,                             // data
        0x3B,
    };
    EXPECT_EQ(WriteToBytes(image), expected);
}

TEST(WriteGIF89, FillsTheTableUpToAPowerOfTwo) {
    const struct {
        int colors, packed, entries;
    } cases[] = {{1, 0x6F, 1}, {2, 0x80, 2}, {17, 0xC4, 32}, {129, 0xF7, 256}, {256, 0xF7, 256}};
    for (const auto& c : cases) {
        const PlainImage image = TinyImage(1, 1, {0}, c.colors);
        const ByteVector file = WriteToBytes(image);
        EXPECT_EQ(file[10], c.packed) << c.colors;
        EXPECT_EQ(file[11], 255) << c.colors;
        EXPECT_EQ(file[13 + 3 * static_cast<std::size_t>(c.entries)], 0x2C) << c.colors;
        for (int i = 0; i < c.entries; ++i)
            EXPECT_EQ(file[13 + 3 * static_cast<std::size_t>(i)],
                      i < c.colors ? image.table.red[i] : 0)
                << c.colors << " colours, entry " << i;
    }
}

TEST(WriteGIF89, CutsCommentsIntoBlocksOf255Bytes) {
    const struct {
        std::size_t length;
        std::vector<std::size_t> blocks;
    } cases[] = {{0, {}}, {1, {1}}, {255, {255}}, {256, {255, 1}}, {510, {255, 255}}};
    for (const auto& c : cases) {
        PlainImage image = TinyImage(1, 1, {0}, 2);
        image.comment = std::string(c.length, '\xE9');
        const ByteVector file = WriteToBytes(image);
        std::vector<std::size_t> blocks;
        std::size_t at = 13 + 6 + 2;
        for (; file[at] != 0; at += file[at] + 1u) blocks.push_back(file[at]);
        EXPECT_EQ(blocks, c.blocks) << "length " << c.length;
        EXPECT_EQ(file[at + 1], 0x2C) << "length " << c.length;
    }
}

/// The data of a file without extensions: the sub-blocks of the only image, joined.
ByteVector ImageData(const ByteVector& file, int tableEntries) {
    ByteVector data;
    std::size_t at = 13 + 3 * static_cast<std::size_t>(tableEntries) + 10 + 1;
    for (; file[at] != 0; at += file[at] + 1u)
        data.insert(data.end(), file.begin() + static_cast<long>(at) + 1,
                    file.begin() + static_cast<long>(at + file[at]) + 1);
    EXPECT_EQ(file.size(), at + 2);
    return data;
}

TEST(WriteGIF89, KeepsTheLastCodesOfEveryLength) {
    std::mt19937 random(600);
    for (int pixels = 1; pixels <= 600; ++pixels) {
        const PlainImage image = RandomImage(random, 1, pixels, 256, 2);
        const PlainExpansion expansion = PlainLzwExpand(ImageData(WriteToBytes(image), 256), 8);
        ASSERT_TRUE(expansion.complete && expansion.spareBytes == 0) << pixels << " pixels";
        ASSERT_EQ(FirstDifference(expansion.symbols, image.indices), "") << pixels << " pixels";
    }
}

int CodeBits(const ByteVector& symbols) {
    int bits = 0;
    for (const PlainCode& code : PlainLzwCodes(symbols, {.rootSize = 2})) bits += code.width;
    return bits;
}

TEST(WriteGIF89, WritesNoEmptyRestAfterAFullBlock) {
    // With four colours, 278 codes between clear and end code fill a block to the last bit. No
    // pixel brings more than one code, so taking them away one by one meets that number.
    std::mt19937 random(2040);
    PlainImage image = RandomImage(random, 1, 2000, 4, 1);
    while (CodeBits(image.indices) > 255 * 8) image.indices.pop_back();
    ASSERT_EQ(CodeBits(image.indices), 255 * 8);
    image.columns = static_cast<int>(image.indices.size());
    const ByteVector file = WriteToBytes(image);
    EXPECT_EQ(file[13 + 12 + 11], 255);
    EXPECT_EQ(file.size(), 13u + 12 + 11 + 256 + 2);
    EXPECT_EQ(ByteVector(file.end() - 2, file.end()), (ByteVector{0, 0x3B}));
}

struct RandomCase {
    PlainImage image;
    std::string name;
};

/// Images of all table sizes: noise, runs and flat, with and without the optional blocks.
std::vector<RandomCase> RandomCases() {
    std::mt19937 random(4711);
    std::vector<RandomCase> cases;
    for (const int colors : {2, 3, 4, 8, 13, 16, 32, 64, 128, 256})
        for (const int runLength : {1, 12, 1000000}) {
            const int rows = 1 + static_cast<int>(random() % 150);
            const int columns = 1 + static_cast<int>(random() % 300);
            PlainImage image = RandomImage(random, rows, columns, colors, runLength);
            image.interlaced = random() % 2 != 0;
            if (random() % 2) image.transparentIndex = colors - 1;
            if (random() % 2) image.comment = std::string(1 + random() % 700, 'x');
            cases.push_back({image, std::to_string(columns) + " x " + std::to_string(rows) + ", " +
                                        std::to_string(colors) + " colours, runs of " +
                                        std::to_string(runLength)});
        }
    return cases;
}

TEST(WriteGIF89, WritesWhatThePlainWriterWritesAndGiflibReadsIt) {
    for (const auto& [image, name] : RandomCases()) {
        SCOPED_TRACE(name);
        const ByteVector file = WriteToBytes(image);
        EXPECT_EQ(FirstDifference(file, PlainGif(image)), "");

        std::string reason;
        const auto picture = GiflibDecode(file, &reason);
        ASSERT_TRUE(picture) << reason;
        EXPECT_EQ(picture->rows, image.rows);
        EXPECT_EQ(picture->columns, image.columns);
        EXPECT_EQ(FirstDifference(picture->indices, image.indices), "");
        EXPECT_EQ(picture->interlaced, image.interlaced);
        EXPECT_EQ(picture->transparentIndex, image.transparentIndex);
        EXPECT_EQ(picture->comment, image.comment);
        for (int i = 0; i < image.colors; ++i)
            ASSERT_EQ(PackColor(TableEntry(picture->table, i)),
                      PackColor(TableEntry(image.table, i)))
                << "entry " << i;
    }
}

TEST(WriteGIF89, ReadsRowsAtAnyDistance) {
    std::mt19937 random(5);
    const PlainImage image = RandomImage(random, 9, 5, 16, 1);
    const struct { int rowBytes, firstRow; } cases[] = {{5, 0}, {8, 0}, {-7, 8 * 7}};
    for (const auto& c : cases) {
        ByteVector memory(9 * 8, 0xEE);
        for (int row = 0; row < 9; ++row)
            std::copy_n(image.indices.begin() + row * 5, 5,
                        memory.begin() + c.firstRow + row * c.rowBytes);
        GifFile file;
        EXPECT_EQ(file.WriteRows(image, memory.data() + c.firstRow, c.rowBytes), noErr);
        EXPECT_EQ(FirstDifference(file.Bytes(), PlainGif(image)), "") << c.rowBytes;
    }
}

TEST(CeilLog2, IsTheBitsOfATable) {
    const struct {
        std::int64_t n;
        int bits;
    } cases[] = {{-5, 0},
                 {0, 0},
                 {1, 0},
                 {2, 1},
                 {3, 2},
                 {4, 2},
                 {5, 3},
                 {17, 5},
                 {256, 8},
                 {0x7FFFFFFF, 31},
                 {std::int64_t{1} << 32, -1}};
    for (const auto& c : cases) EXPECT_EQ(CeilLog2(c.n), c.bits) << c.n;
}

/// Every test of failures ends with nothing armed and all memory and files given back.
class WriteGIF89Failures : public testing::Test {
  protected:
    WriteGIF89Failures() {
        std::mt19937 random(300);
        image = RandomImage(random, 500, 501, 256, 1); // more than five times the stream's buffer
        whole = PlainGif(image);
        ClearFaults();
        TakeCloseError();
    }
    ~WriteGIF89Failures() override {
        ClearFaults();
        TakeCloseError();
        EXPECT_EQ(LiveMemoryBlocks(), blocks);
    }
    /// A file that is still open could not be opened for writing again.
    void ExpectClosed(GifFile& target) {
        ClearFaults();
        EXPECT_EQ(target.Write(image), noErr);
        EXPECT_EQ(LiveMemoryBlocks(), blocks);
    }

    const long blocks = LiveMemoryBlocks();
    PlainImage image;
    ByteVector whole;
    GifFile file;
};

TEST_F(WriteGIF89Failures, OfEveryWriteEndTheFileThere) {
    ASSERT_EQ(file.Write(image), noErr);
    const int writes = CallsSoFar(FaultPoint::writeFile);
    ASSERT_GT(writes, 4);
    for (int n = 1; n <= writes; ++n) {
        SCOPED_TRACE("write " + std::to_string(n));
        GifFile target;
        FailNthCall(FaultPoint::writeFile, n, dskFulErr);
        // The last write is the flush at closing, which the writer does not look at.
        EXPECT_EQ(target.Write(image), n < writes ? dskFulErr : noErr);
        EXPECT_EQ(TakeCloseError(), n < writes ? noErr : dskFulErr);
        EXPECT_EQ(CallsSoFar(FaultPoint::writeFile), n) << "something was written after the error";
        const ByteVector bytes = target.Bytes();
        ASSERT_LT(bytes.size(), whole.size());
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), whole.begin()));
        ExpectClosed(target);
    }
}

TEST_F(WriteGIF89Failures, ToOpenAreReported) {
    FailNthCall(FaultPoint::openFile, 1, permErr);
    EXPECT_EQ(file.Write(image), permErr);
    EXPECT_EQ(CallsSoFar(FaultPoint::closeFile), 0) << "a file that is not open was closed";
    ExpectClosed(file);
}

TEST_F(WriteGIF89Failures, OfMemoryEndBeforeTheData) {
    // The stream's buffer and both tables of the coder. Without the tables header, colour table
    // and image descriptor are there, and nothing after them.
    for (int n = 1; n <= 3; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        GifFile target;
        FailNthCall(FaultPoint::allocate, n, memFullErr);
        EXPECT_EQ(target.Write(image), memFullErr);
        EXPECT_EQ(target.Bytes().size(), n == 1 ? 0u : 13u + 768 + 10);
        ExpectClosed(target);
    }
    EXPECT_EQ(CallsSoFar(FaultPoint::allocate), 3);
}

TEST_F(WriteGIF89Failures, ToCloseAreLeftToTheFileLayer) {
    FailNthCall(FaultPoint::closeFile, 1, ioErr);
    EXPECT_EQ(file.Write(image), noErr);
    EXPECT_EQ(TakeCloseError(), ioErr);
    EXPECT_EQ(FirstDifference(file.Bytes(), whole), "");
    ExpectClosed(file);
}

} // namespace
