// Pictures in memory, the stream they are read from, and how a format is recognised.
#include "InputFile.h"
#include "PictureFromBytes.h"
#include "Problem.h"
#include "ReadPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <sys/socket.h>
#include <unistd.h>

using namespace gif89;

namespace {

std::string ReasonOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Problem& problem) {
        return problem.what();
    }
    return "done";
}

// Standard input that a test fills: pipe or socket in its place while this lives.
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

TEST(ReadPicture, OtherContentIsRefusedByItsFirstBytes) {
    EXPECT_EQ(RefusalOf({}), "is empty");
    for (const std::string content : {"G", "GIF88a", "II*", "P5", "P51 1 255 a", "P4 8 1\na",
                                      "P7 332\n", "\x89PNG\n\x1a\n--------", "\xFF\xD8"})
        EXPECT_EQ(RefusalOf(Bytes(content.begin(), content.end())),
                  "is not a PNG, JPEG, WebP, TIFF, GIF, BMP, PGM, PPM or PAM picture")
            << content;
}

TEST(InputFile, SaysWhyAPathCannotBeRead) {
    const std::pair<const char*, const char*> cases[] = {
        {"/", "is a folder, not a picture"},
        {"/nowhere/at all", "cannot be opened: No such file or directory"},
        // The first page of a process may not be read, not even by itself.
        {"/proc/self/mem", "cannot be read: Input/output error"}};
    for (const auto& [path, reason] : cases)
        EXPECT_EQ(ReasonOf([p = path] {
                      InputFile file = InputFile::Open(p);
                      ReadPicture(file);
                  }),
                  reason);
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
    EXPECT_TRUE(pixels == Bytes(file.data() + header, file.data() + file.size()));
}

TEST(InputFile, AnErrorInTheMiddleIsNotTheEnd) {
    // A peer that leaves with something unread brings what it sent, then an error.
    for (const std::string& sent :
         {std::string("P5 9 9 255\nabcdefghijklm"),
          std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16),
          std::string("\xFF\xD8\xFF\xE0\0\x10JFIF\0\x01\x01\0\0\x01", 16),
          std::string("GIF89a\x02\0\x02\0\x80\0\0", 13), std::string("II*\0\x08\0\0\0", 8)}) {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        ASSERT_EQ(write(ends[0], sent.data(), sent.size()), static_cast<ssize_t>(sent.size()));
        ASSERT_EQ(write(ends[1], "x", 1), 1);
        close(ends[0]);
        const StandardInputFrom redirect(ends[1]);
        InputFile input = InputFile::StandardInput();
        EXPECT_EQ(ReasonOf([&] { ReadPicture(input); }), "cannot be read: Connection reset by peer")
            << sent;
    }
}

TEST(InputFile, EndlessRestIsRefused) {
    EXPECT_EQ(ReasonOf([] { InputFile::Open("/dev/zero").ReadRest(3 << 20); }),
              "has more than 3 megabytes");
}
