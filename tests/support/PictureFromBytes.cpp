#include "PictureFromBytes.h"

#include "Problem.h"
#include "ReadPicture.h"

#include <gtest/gtest.h>

#include <random>
#include <sys/mman.h>
#include <unistd.h>

Bytes RandomBytes(std::size_t count, unsigned seed, unsigned values) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random() % values);
    return bytes;
}

Bytes LE(std::size_t value, int bytes) {
    Bytes stored;
    for (; bytes > 0; --bytes, value >>= 8) stored.push_back(static_cast<std::uint8_t>(value));
    return stored;
}

Bytes Join(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

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

std::string ComplaintAbout(const Bytes& bytes) {
    const std::string refusal = RefusalOf(bytes);
    if (!refusal.empty()) return refusal;
    const std::vector<std::string> warnings = PictureFromBytes(bytes).notes.warnings;
    return warnings.empty() ? std::string() : warnings.front();
}

Bytes PixelsOf(const gif89::Picture& picture) {
    return {picture.pixels.get(), picture.pixels.get() + picture.PixelBytes()};
}

Bytes ColorsOf(gif89::Picture picture) {
    ExpandToRGB(picture);
    const Bytes pixels = PixelsOf(picture);
    if (picture.kind == gif89::Picture::Kind::rgbAlpha) return pixels;
    Bytes colors;
    for (std::size_t n = 0; n < pixels.size(); n += 3)
        colors.insert(colors.end(), {pixels[n], pixels[n + 1], pixels[n + 2], 255});
    return colors;
}

std::size_t CountNoticedDamage(const Bytes& file) {
    EXPECT_EQ(ComplaintAbout(file), "");
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_NE(ComplaintAbout(Bytes(file.data(), file.data() + length)), "")
            << "the first " << length << " of " << file.size() << " bytes";
    std::size_t noticed = 0;
    for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
        Bytes damaged = file;
        damaged[bit / 8] = static_cast<std::uint8_t>(file[bit / 8] ^ 1U << bit % 8);
        noticed += ComplaintAbout(damaged).empty() ? 0 : 1;
    }
    return noticed;
}
