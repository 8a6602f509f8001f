#include "PictureFromBytes.h"

#include "Problem.h"
#include "ReadPicture.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

using gif89::InputFile;
using gif89::Picture;

Picture PictureFromBytes(const Bytes& bytes) {
    const int descriptor = memfd_create("picture", MFD_CLOEXEC);
    EXPECT_EQ(write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    InputFile file = InputFile::Open("/proc/self/fd/" + std::to_string(descriptor));
    close(descriptor);
    return gif89::ReadPicture(file);
}

Picture PictureFromText(std::string_view bytes) {
    return PictureFromBytes(Bytes(bytes.begin(), bytes.end()));
}

std::string RefusalOf(const Bytes& bytes) {
    try {
        PictureFromBytes(bytes);
    } catch (const gif89::Problem& problem) {
        return problem.what();
    }
    return {};
}

std::string RefusalOf(std::string_view bytes) {
    return RefusalOf(Bytes(bytes.begin(), bytes.end()));
}

Bytes PixelsOf(const Picture& picture) {
    return {picture.pixels.get(), picture.pixels.get() + picture.PixelBytes()};
}

void ExpectEveryCutRefused(const Bytes& file) {
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_NE(RefusalOf(Bytes(file.data(), file.data() + length)), "")
            << "the first " << length << " of " << file.size() << " bytes";
}

std::size_t CountRefusedBitFlips(const Bytes& file) {
    std::size_t refused = 0;
    Bytes damaged = file;
    for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
        damaged[bit / 8] = static_cast<std::uint8_t>(file[bit / 8] ^ 1U << bit % 8);
        refused += RefusalOf(damaged).empty() ? 0 : 1;
        damaged[bit / 8] = file[bit / 8];
    }
    return refused;
}
