// A file that is checked while another thread writes it.
#include "FollowedFile.h"

#include "DecodeGif.h"
#include "PlainGif.h"
#include "Problem.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <functional>
#include <thread>

namespace gif89 {
namespace {

struct Outcome {
    std::string refusal;
    DecodedGif gif;
};

/// How scanning goes while the bytes are written in pieces, and then the file is ended.
Outcome Follow(const ByteVector& bytes, std::size_t pieceBytes,
               const std::function<void(FollowedFile&)>& end) {
    const TemporaryFolder folder;
    const int descriptor = open(folder.Write("a.gif", "").c_str(), O_RDWR | O_CLOEXEC);
    FollowedFile file(descriptor);
    Outcome outcome;
    std::thread reader([&] {
        GifCollector collector;
        try {
            ScanGif(file, collector);
            outcome.gif = std::move(collector.gif);
        } catch (const Problem& problem) {
            outcome.refusal = problem.what();
        }
    });
    for (std::size_t done = 0; done < bytes.size(); done += pieceBytes) {
        const std::size_t count = std::min(pieceBytes, bytes.size() - done);
        EXPECT_EQ(write(descriptor, bytes.data() + done, count), static_cast<ssize_t>(count));
        if (done % 8 == 0) std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    end(file);
    reader.join();
    close(descriptor);
    return outcome;
}

PlainImage MakeImage() {
    std::mt19937 random(5);
    PlainImage image = RandomImage(random, 300, 400, 256, 1);
    image.interlaced = true;
    return image;
}

TEST(FollowedFile, IsReadAsTheFinishedFileWouldBe) {
    const PlainImage image = MakeImage();
    const ByteVector bytes = PlainGif(image);
    ASSERT_GT(bytes.size(), 2U * 65536); // more than is held at a time
    for (const std::size_t piece : {std::size_t{7}, std::size_t{1000}, bytes.size()}) {
        const Outcome outcome = Follow(bytes, piece, &FollowedFile::Complete);
        ASSERT_EQ(outcome.refusal, "") << piece;
        ASSERT_TRUE(
            std::equal(image.indices.begin(), image.indices.end(), outcome.gif.indices.get()));
    }
}

TEST(FollowedFile, EndsTheReaderWithItsWriter) {
    ByteVector bytes = PlainGif(MakeImage());
    const std::size_t size = bytes.size();
    const ByteVector cut(bytes.begin(), bytes.begin() + 100000);
    EXPECT_EQ(Follow(cut, 1000, &FollowedFile::Complete).refusal,
              "at byte 100000: the file ends inside the image data");
    EXPECT_EQ(Follow(cut, 1000, &FollowedFile::Abandon).refusal, "the file was given up");
    bytes.push_back(0);
    EXPECT_EQ(Follow(bytes, 1000, &FollowedFile::Complete).refusal,
              "at byte " + std::to_string(size) + ": 1 bytes after the trailer");
}

} // namespace
} // namespace gif89
