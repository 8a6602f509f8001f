// The strict decoder: agrees with what was put into a file, and refuses everything else.
#include "DecodeGif.h"

#include "GiflibDecode.h"
#include "PlainGif.h"
#include "Problem.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using gif89::DecodedGif;
using gif89::DecodeGif;
using gif89::Problem;

/// The reason for refusing the file; empty when it is decoded.
std::string Refusal(std::span<const std::uint8_t> file) {
    try {
        DecodeGif(file);
    } catch (const Problem& problem) {
        return problem.what();
    }
    return "";
}

TEST(DecodeGif, ReturnsWhatTheFileWasMadeOf) {
    std::mt19937 random(31337);
    for (const int colors : {2, 3, 16, 200, 256})
        for (const int runLength : {1, 15, 1000000}) {
            const int rows = 1 + static_cast<int>(random() % 120);
            const int columns = 1 + static_cast<int>(random() % 400);
            PlainImage image = RandomImage(random, rows, columns, colors, runLength);
            image.interlaced = random() % 2 == 0;
            if (runLength != 15) image.transparentIndex = colors - 1;
            if (runLength != 1) image.comment = std::string(random() % 600, '\0');
            SCOPED_TRACE(std::to_string(columns) + " x " + std::to_string(rows) + ", " +
                         std::to_string(colors) + " colours");

            const DecodedGif gif = DecodeGif(PlainGif(image));
            ASSERT_TRUE(gif.rows == rows && gif.columns == columns);
            EXPECT_TRUE(std::equal(image.indices.begin(), image.indices.end(), gif.indices.get()));
            EXPECT_EQ(gif.interlaced, image.interlaced);
            EXPECT_EQ(gif.transparentIndex, image.transparentIndex);
            EXPECT_EQ(gif.comment, image.comment);
            EXPECT_TRUE(gif.colors >= colors && gif.colors < 2 * colors) << gif.colors;
            auto table = TableColors(image.table, colors);
            table.resize(256);
            EXPECT_EQ(TableColors(gif.table), table);
        }
}

/// 3 x 5 pixels of 3 colours with every optional block: header 0, table 13, comment 25, graphic
/// control 31, descriptor 39, minimum code size 49, data 50.
ByteVector SmallFile() {
    std::mt19937 random(3);
    PlainImage image = RandomImage(random, 5, 3, 3, 1);
    image.interlaced = true;
    image.transparentIndex = 1;
    image.comment = "hi";
    return PlainGif(image);
}

// What passes must be what a reader from outside sees too; what is done out of bounds on the way
// the sanitizers tell.
TEST(DecodeGif, AcceptsNoCutAndNoChangeOfOneByteThatGiflibReadsInAnotherWay) {
    const ByteVector file = SmallFile();
    ASSERT_EQ(Refusal(file), "");
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_NE(Refusal(std::span(file).first(length)), "") << length << " bytes";
    int refused = 0;
    for (std::size_t at = 0; at < file.size(); ++at)
        for (int value = 0; value < 256; ++value) {
            ByteVector changed = file;
            changed[at] = static_cast<std::uint8_t>(value);
            if (Refusal(changed) != "") {
                ++refused;
                continue;
            }
            SCOPED_TRACE("byte " + std::to_string(at) + " is " + std::to_string(value));
            const DecodedGif gif = DecodeGif(changed);
            std::string reason;
            const auto picture = GiflibDecode(changed, &reason);
            ASSERT_TRUE(picture) << reason;
            ASSERT_EQ(ByteVector(gif.indices.get(), gif.indices.get() + gif.rows * gif.columns),
                      picture->indices);
            ASSERT_EQ(gif.transparentIndex, picture->transparentIndex);
            ASSERT_EQ(gif.interlaced, picture->interlaced);
            ASSERT_EQ(gif.comment, picture->comment);
        }
    EXPECT_GT(refused, 0);
}

/// A file of rows x columns with a table of 4 and these data, sub-blocks included.
ByteVector FileAround(int rows, int columns, const ByteVector& dataBlocks) {
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    const ByteVector size = {byte(columns), byte(columns >> 8), byte(rows), byte(rows >> 8)};
    ByteVector file = {'G', 'I', 'F', '8', '9', 'a'};
    for (const ByteVector& part :
         {size, ByteVector{0x91, 255, 0}, ByteVector(12), ByteVector{0x2C, 0, 0, 0, 0}, size,
          ByteVector{0, 2}, dataBlocks, ByteVector{0x3B}})
        file.insert(file.end(), part.begin(), part.end());
    return file;
}

// Files of others may go on with a full table, of which pixels are no longer held back.
TEST(DecodeGif, GoesOnWithAFullTable) {
    constexpr int kSide = 500;
    std::mt19937 random(7);
    ByteVector indices(std::size_t{kSide} * kSide);
    for (std::uint8_t& index : indices) index = random() % 8 == 0 ? random() % 4 : 1;
    const auto codes = PlainLzwCodes(indices, {2, false});
    const DecodedGif gif = DecodeGif(FileAround(kSide, kSide, DataBlocks(PackCodes(codes))));
    EXPECT_TRUE(std::equal(indices.begin(), indices.end(), gif.indices.get()));
}

TEST(DecodeGif, SaysWhatIsWrongAndWhere) {
    const auto with = [small = SmallFile()](std::size_t at, std::uint8_t value) {
        ByteVector file = small;
        file[at] = value;
        return file;
    };
    const auto inserted = [small = SmallFile()](long at, const ByteVector& bytes) {
        ByteVector file = small;
        file.insert(file.begin() + at, bytes.begin(), bytes.end());
        return file;
    };
    PlainImage beyond;
    beyond.rows = beyond.columns = beyond.colors = 2; // coded with two bits all the same
    beyond.indices = {0, 1, 2, 0};
    // Codes of three bits: 4 clears the table, 5 is the end.
    const std::pair<ByteVector, std::string> cases[] = {
        {{}, "at byte 0: the file ends inside the signature"},
        {with(9, 0x80), "at byte 6: the screen has 3 x 32773 pixels, expected sides of 1 to 32767"},
        {with(26, 0x01),
         "at byte 25: expected a comment, a graphic control extension or an image here"},
        {inserted(31, {0x21, 0xFE, 0}), "at byte 33: a second comment, expected one at most"},
        {inserted(39, {0x21, 0xF9, 4, 1, 0, 0, 1, 0}),
         "at byte 41: a second graphic control extension"},
        {with(37, 4), "at byte 37: the transparent index 4 lies past the table of 4"},
        {with(40, 1), "at byte 40: the image's left edge is 1, expected 0"},
        {inserted(60, {0, 0}), "at byte 60: 2 bytes after the trailer"},
        {FileAround(1, 2, {2, 0x4C, 0x01, 0}), // 4 1 5
         "at byte 39: the end code instead of a pixel for row 0, column 1"},
        {FileAround(1, 3, {2, 0xCC, 0x0B, 0}), // 4 1 7 5
         "at byte 39: an impossible code for row 0, column 1"},
        {FileAround(1, 1, {1, 0x0C, 0}), // 4 1
         "at byte 39: expected the end code after the last pixel"},
        {FileAround(2, 2, {1, 0x0C, 0}),
         "at byte 39: the image data end early for row 0, column 1"},
        {FileAround(1, 1, {3, 0x4C, 0x01, 0x00, 0}),
         "at byte 39: more image data after the end code"},
        {FileAround(32767, 32767, {2, 0x4C, 0x01, 0}),
         "at byte 36: 2 bytes of data cannot hold 1073676289 pixels"},
        {PlainGif(beyond), "at byte 33: index 2 past the table of 2 for row 1, column 0"}};
    for (const auto& [file, refusal] : cases) EXPECT_EQ(Refusal(file), refusal);
}

} // namespace
