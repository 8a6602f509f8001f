// Integer patterns over a Mersenne twister, which the standard fixes to the bit.
#include "RandomPictures.h"

#include <algorithm>
#include <cstddef>
#include <random>

namespace {

using Pixel = std::uint8_t*;

std::uint8_t Byte(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

// Rises from 0 to 255 and falls again within a period.
int Wave(int position, int period) {
    const int phase = position % period * 510 / period;
    return phase <= 255 ? phase : 510 - phase;
}

void PaintPhoto(Pixel pixels, int rows, int columns, int planes, std::mt19937& random) {
    struct {
        int across, down, shift;
    } waves[4];
    for (auto& wave : waves)
        wave = {columns / 2 + 8 + static_cast<int>(random() % 900),
                rows / 2 + 8 + static_cast<int>(random() % 900), static_cast<int>(random() % 1000)};
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            for (int p = 0; p < planes; ++p) {
                const auto& wave = waves[p];
                const int level =
                    (Wave(x + wave.shift, wave.across) + Wave(y + wave.shift / 2, wave.down)) / 2;
                *pixels++ = p == 3 ? Byte(level * 3 - 255)
                                   : Byte(level + static_cast<int>(random() % 17) - 8);
            }
}

void PaintFlat(Pixel pixels, int rows, int columns, int planes, std::mt19937& random) {
    std::uint8_t color[4];
    for (auto& level : color) level = static_cast<std::uint8_t>(random());
    for (int i = 0; i < rows * columns; ++i) pixels = std::copy_n(color, planes, pixels);
}

void PaintFewColors(Pixel pixels, int rows, int columns, int planes, std::mt19937& random) {
    std::uint8_t colors[16][4];
    for (auto& color : colors) {
        for (auto& level : color) level = static_cast<std::uint8_t>(random());
        color[3] = color[3] < 64 ? 0 : 255;
    }
    const auto used = static_cast<std::uint32_t>(1 + random() % 16);
    const auto salt = static_cast<std::uint32_t>(random());
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x) {
            const auto block = static_cast<std::uint32_t>(y / 4 * 4099 + x / 4);
            pixels =
                std::copy_n(colors[(block * 2654435761u ^ salt) % 4093 % used], planes, pixels);
        }
}

void PaintNoise(Pixel pixels, int rows, int columns, int planes, std::mt19937& random) {
    for (int i = 0; i < rows * columns * planes; ++i) {
        const auto word = static_cast<std::uint32_t>(random());
        const std::uint32_t choice = i % planes == 3 ? word >> 30 : 2;
        *pixels++ = choice == 0 ? 0 : choice == 1 ? 255 : static_cast<std::uint8_t>(word);
    }
}

constexpr decltype(&PaintPhoto) kPainters[] = {PaintPhoto, PaintFlat, PaintFewColors, PaintNoise};

} // namespace

std::vector<std::uint8_t> RandomPixels(PictureKind kind, int rows, int columns, int planes,
                                       std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(rows) *
                                     static_cast<std::size_t>(columns * planes));
    kPainters[static_cast<int>(kind)](pixels.data(), rows, columns, planes, random);
    return pixels;
}

RGBLookUpTable RandomTable(int colors, std::uint32_t seed) {
    std::mt19937 random(seed);
    RGBLookUpTable table = {};
    for (int i = 0; i < colors; ++i) SetTableEntry(table, i, UnpackColor(random() & 0xFFFFFF));
    return table;
}

std::vector<PackedColor> TableColors(const RGBLookUpTable& table, int count) {
    std::vector<PackedColor> colors;
    for (int i = 0; i < count; ++i) colors.push_back(PackColor(TableEntry(table, i)));
    return colors;
}

std::vector<std::uint8_t> PadRows(const std::vector<std::uint8_t>& rows, int rowBytes,
                                  int padding) {
    std::vector<std::uint8_t> padded;
    for (auto row = rows.begin(); row != rows.end(); row += rowBytes) {
        padded.insert(padded.end(), row, row + rowBytes);
        padded.insert(padded.end(), static_cast<std::size_t>(padding), 0xA5);
    }
    return padded;
}
