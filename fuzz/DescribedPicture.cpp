#include "DescribedPicture.h"

#include "RandomPictures.h"

#include <algorithm>
#include <random>

using gif89::Picture;

namespace {

constexpr int kMostRows = 60;
constexpr int kMostChannels = 4;

/// Fills bytes in one of several ways; each is below `values`.
void FillBytes(FuzzInput& input, std::uint8_t* bytes, std::size_t count, int values) {
    const int way = input.Number(0, 3);
    const auto limited = [values](unsigned byte) {
        return static_cast<std::uint8_t>(byte % static_cast<unsigned>(values));
    };
    const std::string pattern = way == 3 ? std::string() : input.Text();
    if (!pattern.empty()) { // over and over
        for (std::size_t i = 0; i < count; ++i)
            bytes[i] = limited(static_cast<std::uint8_t>(pattern[i % pattern.size()]));
        return;
    }
    std::mt19937 random(input.Byte());
    const unsigned run = 1U + input.Byte() % 16;
    auto value = static_cast<unsigned>(random());
    for (std::size_t i = 0; i < count; ++i) {
        if (i % run == 0) value = static_cast<unsigned>(random());
        bytes[i] = limited(value);
    }
}

std::string WithoutZeros(std::string text) {
    std::erase(text, '\0');
    return text;
}

void TakeTable(FuzzInput& input, Picture& picture) {
    picture.colors = input.Number(1, 256);
    const int way = input.Number(0, 2);
    if (way == 0) picture.table = RandomTable(picture.colors, input.Byte());
    if (way == 1 && picture.colors > 1) SetGreyRamp(picture, picture.colors);
    if (way == 2) { // a few colours, equal ones and black among them
        const std::string levels = input.Text();
        for (std::size_t i = 0; i < levels.size() && i < static_cast<std::size_t>(picture.colors);
             ++i) {
            const auto level = static_cast<std::uint8_t>(levels[i]);
            SetTableEntry(picture.table, static_cast<int>(i), {0, level, level, 0});
        }
    }
}

void TakeChannels(FuzzInput& input, Picture& picture) {
    const char* const names[] = {gif89::kTransparencyChannel, "", "Mask", nullptr};
    for (int left = input.Number(0, kMostChannels); left > 0; --left) {
        const char* const name = names[input.Number(0, 3)];
        std::uint8_t* const bytes =
            AddChannel(picture, name ? std::string(name) : WithoutZeros(input.Text()));
        FillBytes(input, bytes, picture.PixelBytes(), 256);
    }
}

void TakePixels(FuzzInput& input, Picture& picture) {
    const int way = input.Number(0, 7);
    if (way >= 4) return FillBytes(input, picture.pixels.get(), picture.PixelBytes(), 256);
    const auto pixels = RandomPixels(kPictureKinds[way], picture.rows, picture.columns,
                                     picture.BytesPerPixel(), input.Byte());
    std::copy(pixels.begin(), pixels.end(), picture.pixels.get());
}

} // namespace

Picture TakePicture(FuzzInput& input, int mostColumns) {
    constexpr Picture::Kind kKinds[] = {Picture::Kind::rgb, Picture::Kind::rgbAlpha,
                                        Picture::Kind::indexed};
    const Picture::Kind kind = kKinds[input.Number(0, 2)];
    const int rows = input.Number(1, kMostRows), columns = input.Number(1, mostColumns);
    Picture picture = gif89::MakePicture(kind, rows, columns);
    picture.comment = WithoutZeros(input.Text());
    if (kind == Picture::Kind::indexed) {
        TakeTable(input, picture);
        FillBytes(input, picture.pixels.get(), picture.PixelBytes(), picture.colors);
        TakeChannels(input, picture);
    } else {
        TakePixels(input, picture);
    }
    return picture;
}
