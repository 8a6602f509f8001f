#include "PictureFromBytes.h"

#include "Problem.h"
#include "ReadPicture.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

gif89::Picture PictureFromBytes(const Bytes& bytes) {
    const int descriptor = memfd_create("picture", MFD_CLOEXEC);
    EXPECT_EQ(write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    gif89::InputFile file = gif89::InputFile::Open("/proc/self/fd/" + std::to_string(descriptor));
    close(descriptor);
    return gif89::ReadPicture(file);
}

std::string RefusalOf(const Bytes& bytes) {
    try {
        PictureFromBytes(bytes);
    } catch (const gif89::Problem& problem) {
        return problem.what();
    }
    return {};
}

Bytes PixelsOf(const gif89::Picture& picture) {
    return {picture.pixels.get(), picture.pixels.get() + picture.PixelBytes()};
}

std::size_t CountRefusedDamage(const Bytes& file) {
    EXPECT_EQ(RefusalOf(file), "");
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_NE(RefusalOf(Bytes(file.data(), file.data() + length)), "")
            << "the first " << length << " of " << file.size() << " bytes";
    std::size_t refused = 0;
    for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
        Bytes damaged = file;
        damaged[bit / 8] = static_cast<std::uint8_t>(file[bit / 8] ^ 1U << bit % 8);
        refused += RefusalOf(damaged).empty() ? 0 : 1;
    }
    return refused;
}
