// Pictures in memory, the stream they are read from, and how a format is recognised.
#include "InputFile.h"
#include "PictureFromBytes.h"
#include "Problem.h"
#include "ReadPicture.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace gif89;

namespace {

Picture PictureOf(Picture::Kind kind, int rows, int columns, const Bytes& pixels) {
    Picture picture = MakePicture(kind, rows, columns);
    EXPECT_EQ(picture.PixelBytes(), pixels.size());
    std::copy(pixels.begin(), pixels.end(), picture.pixels.get());
    return picture;
}

std::string OpeningRefusal(const std::string& path) {
    try {
        InputFile file = InputFile::Open(path);
        ReadPicture(file);
    } catch (const Problem& problem) {
        return problem.what();
    }
    return {};
}

// Puts a descriptor in the place of standard input while it lives, and closes it.
class StandardInputFrom {
  public:
    explicit StandardInputFrom(int descriptor) : saved(dup(STDIN_FILENO)) {
        dup2(descriptor, STDIN_FILENO);
        close(descriptor);
    }
    ~StandardInputFrom() {
        dup2(saved, STDIN_FILENO);
        close(saved);
    }
    StandardInputFrom(const StandardInputFrom&) = delete;
    StandardInputFrom& operator=(const StandardInputFrom&) = delete;

  private:
    int saved;
};

} // namespace

TEST(MakePicture, RefusesSidesBeforeAskingForMemory) {
    const struct {
        long long rows, columns;
        const char* refusal;
    } cases[] = {
        {0, 5, "is 5 x 0 pixels; at least one pixel is needed"},
        {1, -1, "is -1 x 1 pixels; at least one pixel is needed"},
        {20, 40000, "is 40000 x 20 pixels; sides above 32767 cannot be stored"},
        {32768, 1, "is 1 x 32768 pixels; sides above 32767 cannot be stored"},
        {1LL << 40, 1, "is 1 x 1099511627776 pixels; sides above 32767 cannot be stored"},
    };
    for (const auto& c : cases) {
        try {
            MakePicture(Picture::Kind::rgb, c.rows, c.columns);
            ADD_FAILURE() << "not refused: " << c.refusal;
        } catch (const Problem& problem) {
            EXPECT_STREQ(problem.what(), c.refusal);
        }
    }
}

TEST(DropOpaqueAlpha, ActsOnlyWhenEveryPixelIsOpaque) {
    const Bytes last = {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 254};
    Picture picture = PictureOf(Picture::Kind::rgbAlpha, 3, 1, last);
    DropOpaqueAlpha(picture);
    EXPECT_EQ(picture.kind, Picture::Kind::rgbAlpha);
    EXPECT_EQ(PixelsOf(picture), last);
    picture.pixels[11] = 255;
    DropOpaqueAlpha(picture);
    EXPECT_EQ(picture.kind, Picture::Kind::rgb);
    EXPECT_EQ(PixelsOf(picture), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(ExpandToRGB, TakesColorsFromTheTableAndOpacityFromItsChannel) {
    for (const bool transparent : {false, true}) {
        Picture picture = PictureOf(Picture::Kind::indexed, 1, 2, {1, 0});
        picture.colors = 2;
        SetTableEntry(picture.table, 0, {0, 10, 20, 30});
        SetTableEntry(picture.table, 1, {0, 40, 50, 60});
        picture.comment = "kept";
        picture.channels.push_back({"Mask", std::make_unique<std::uint8_t[]>(2)});
        if (transparent) {
            picture.channels.push_back({kTransparencyChannel, std::make_unique<std::uint8_t[]>(2)});
            picture.channels[1].bytes[0] = 7;
        }
        ExpandToRGB(picture);
        EXPECT_EQ(PixelsOf(picture), transparent ? (Bytes{40, 50, 60, 7, 10, 20, 30, 0})
                                                 : (Bytes{40, 50, 60, 10, 20, 30}));
        EXPECT_EQ(picture.comment, "kept");
        EXPECT_TRUE(picture.channels.empty());
    }
}

TEST(ReadPicture, OtherContentIsRefusedByItsFirstBytes) {
    EXPECT_EQ(RefusalOf(std::string_view{}), "is empty");
    for (const char* content :
         {"G", "GIF89a", "P", "P5", "P51 1 255 a", "P4 8 1\na", "P7 332\n",
          "\x89PNG\n\x1a\n--------", "\xFF\xD8", "Plain text, longer than that"})
        EXPECT_EQ(RefusalOf(std::string_view(content)),
                  "is not a PNG, JPEG, PGM, PPM or PAM picture")
            << content;
}

TEST(InputFile, SaysWhyAPathCannotBeRead) {
    EXPECT_EQ(OpeningRefusal("/"), "is a folder, not a picture");
    EXPECT_EQ(OpeningRefusal("/nowhere/at all"), "cannot be opened: No such file or directory");
    EXPECT_EQ(OpeningRefusal("/dev/null"), "is empty");
    // The first page of a process may not be read, not even by itself.
    EXPECT_EQ(OpeningRefusal("/proc/self/mem"), "cannot be read: Input/output error");
}

TEST(InputFile, PutsShortReadsTogether) {
    std::string file = "P6 30000 1 255\n";
    const std::size_t header = file.size();
    for (int n = 0; n < 90'000; ++n) file += static_cast<char>(n * 7 + n / 251);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_DIRECT), 0); // one read brings one write
    ASSERT_GE(fcntl(ends[1], F_SETPIPE_SZ, 1 << 20), 0);
    for (std::size_t n = 0, count = 5; n < file.size(); n += count, count = n < header ? 5 : 1000)
        ASSERT_GT(write(ends[1], &file[n], std::min(count, file.size() - n)), 0);
    close(ends[1]);
    const StandardInputFrom redirect(ends[0]);
    InputFile input = InputFile::StandardInput();
    EXPECT_EQ(input.Peek().size(), InputFile::kPeekBytes);
    const Bytes pixels = PixelsOf(ReadPicture(input));
    EXPECT_TRUE(pixels == Bytes(file.begin() + static_cast<std::ptrdiff_t>(header), file.end()));
}

TEST(InputFile, BytesComeInOrderWhicheverWayTheyAreTaken) {
    Bytes expected(300'000);
    for (std::size_t n = 0; n < expected.size(); ++n)
        expected[n] = static_cast<std::uint8_t>(n * 7 + n / 251);
    const TemporaryFolder folder;
    InputFile input =
        InputFile::Open(folder.Write("bytes", std::string(expected.begin(), expected.end())));

    Bytes taken(200'000);
    taken[0] = static_cast<std::uint8_t>(input.ReadByte());
    ASSERT_EQ(input.Read(&taken[1], 65'529), 65'529U); // nearly all of what is buffered
    const auto peeked = input.Peek();
    EXPECT_TRUE(std::equal(peeked.begin(), peeked.end(), expected.begin() + 65'530));
    ASSERT_EQ(input.Read(&taken[65'530], 134'470), 134'470U);
    const auto available = input.ReadAvailable();
    ASSERT_FALSE(available.empty());
    taken.insert(taken.end(), available.begin(), available.end());
    const std::size_t soFar = taken.size();
    taken.resize(soFar + 100'000);
    taken.resize(soFar + input.Read(&taken[soFar], 100'000));
    EXPECT_TRUE(taken == expected) << taken.size() << " bytes";
    EXPECT_EQ(input.ReadByte(), -1);
    EXPECT_TRUE(input.Peek().empty());
}

TEST(InputFile, AnErrorInTheMiddleIsNotTheEnd) {
    // A peer that leaves with something unread brings what it sent, then an error.
    const std::string sent[] = {std::string("P5 9 9 255\nabcdefghijklm"),
                                std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16),
                                std::string("\xFF\xD8\xFF\xE0\0\x10JFIF\0\x01\x01\0\0\x01", 16)};
    for (const std::string& bytes : sent) {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        ASSERT_EQ(write(ends[0], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        ASSERT_EQ(write(ends[1], "x", 1), 1);
        close(ends[0]);
        const StandardInputFrom redirect(ends[1]);
        InputFile input = InputFile::StandardInput();
        try {
            ReadPicture(input);
            ADD_FAILURE() << "not refused: " << bytes;
        } catch (const Problem& problem) {
            EXPECT_STREQ(problem.what(), "cannot be read: Connection reset by peer") << bytes;
        }
    }
}
