// Writes the pictures and palette files of the digest list: write_pictures FOLDER. All of them are
// drawn in whole numbers, so that they are the same on every machine.
#include "MakePng.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <stdexcept>

namespace {

constexpr unsigned kOpaque = 255;

/// A sample of channel 0.. at column x of row y.
using Drawing = std::function<unsigned(int x, int y, int channel)>;

/// A number that looks like chance.
unsigned Mix(int x, int y, int z) {
    std::uint32_t bits = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^
                         static_cast<std::uint32_t>(y) * 0x85EBCA77U ^
                         static_cast<std::uint32_t>(z) * 0xC2B2AE3DU;
    bits = (bits ^ bits >> 15) * 0x2C1B3C6DU;
    bits = (bits ^ bits >> 12) * 0x297A2D39U;
    return bits ^ bits >> 15;
}

std::uint8_t LevelOf(int color, int channel, int seed) {
    return static_cast<std::uint8_t>(Mix(color, channel, seed));
}

/// PGM, PPM or PAM for 1, 3 or 4 channels.
std::string Netpbm(int columns, int rows, int channels, unsigned most, const Drawing& draw) {
    char head[100];
    if (channels == 4)
        std::snprintf(head, sizeof head,
                      "P7\nWIDTH %d\nHEIGHT %d\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n",
                      columns, rows);
    else
        std::snprintf(head, sizeof head, "P%d %d %d %u\n", channels == 1 ? 5 : 6, columns, rows,
                      most);
    std::string file = head;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            for (int channel = 0; channel < channels; ++channel) {
                const unsigned sample = draw(x, y, channel);
                if (most > 255) file += static_cast<char>(sample >> 8);
                file += static_cast<char>(sample);
            }
    return file;
}

/// Slopes to the right, downward and across, from 0 to `most`.
Drawing Slopes(int columns, int rows, unsigned most = 255) {
    return [=](int x, int y, int channel) {
        const int at[] = {x, y, x + y}, end[] = {columns - 1, rows - 1, columns + rows - 2};
        return static_cast<unsigned>(at[channel]) * most /
               static_cast<unsigned>(std::max(end[channel], 1));
    };
}

unsigned Noise(int x, int y, int channel) {
    return Mix(x, y, channel) & 255;
}

/// Patches of twenty colours.
unsigned Patches(int x, int y, int channel) {
    return LevelOf(static_cast<int>(Mix(x / 7, y / 5, 9) % 20), channel, 3);
}

/// The drawing as it is within a circle, fading away around it.
Drawing FadingOut(const Drawing& inside, int centerX, int centerY) {
    return [=](int x, int y, int channel) {
        if (channel < 3) return inside(x, y, channel);
        const int distance = (x - centerX) * (x - centerX) + (y - centerY) * (y - centerY);
        return static_cast<unsigned>(std::clamp(255 - (distance - 300) / 4, 0, 255));
    };
}

unsigned PatchesWithHoles(int x, int y, int channel) {
    if (channel < 3) return Patches(x, y, channel);
    return (x / 9 + y / 9) % 3 == 0 ? 0 : kOpaque;
}

/// A palette picture; `used` of its colours are in use.
std::string PalettePng(int columns, int rows, int colors, int used,
                       const std::vector<std::uint8_t>& opacities = {}) {
    PngForm form;
    form.columns = columns;
    form.rows = rows;
    form.colorType = PNG_COLOR_TYPE_PALETTE;
    form.opacities = opacities;
    for (int i = 0; i < colors; ++i)
        form.palette.push_back({LevelOf(i, 0, 5), LevelOf(i, 1, 5), LevelOf(i, 2, 5)});
    std::vector<unsigned> indices;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            indices.push_back(Mix(x / 3, y / 2, 1) % static_cast<unsigned>(used));
    const std::vector<std::uint8_t> file = MakePng(form, indices);
    return {file.begin(), file.end()};
}

std::string Triples(int colors, const std::string& before, const std::string& after, int repeat) {
    std::string bytes;
    for (int i = 0; i < colors; ++i) {
        bytes += before;
        for (int channel = 0; channel < 3; ++channel)
            bytes.append(static_cast<std::size_t>(repeat),
                         static_cast<char>(LevelOf(i, channel, 7)));
        bytes += after;
    }
    return bytes;
}

void Write(const std::string& folder, const char* name, const std::string& bytes) {
    std::ofstream file(folder + "/" + name, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw std::runtime_error(std::string(name).append(" cannot be written"));
}

void WriteAll(const std::string& folder) {
    using namespace std::string_literals;
    Write(folder, "dot.ppm", Netpbm(1, 1, 3, 255, Noise));
    Write(folder, "slopes.ppm", Netpbm(97, 61, 3, 255, Slopes(97, 61)));
    Write(folder, "deep.ppm", Netpbm(50, 40, 3, 65535, Slopes(50, 40, 65535)));
    Write(folder, "noise.ppm", Netpbm(200, 151, 3, 255, Noise));
    Write(folder, "wide.ppm", Netpbm(700, 3, 3, 255, Slopes(700, 3)));
    Write(folder, "tall.ppm", Netpbm(3, 700, 3, 255, Slopes(3, 700)));
    Write(folder, "patches.ppm", Netpbm(90, 70, 3, 255, Patches));
    Write(folder, "fading.pam", Netpbm(97, 61, 4, 255, FadingOut(Slopes(97, 61), 48, 30)));
    Write(folder, "holes.pam", Netpbm(90, 70, 4, 255, PatchesWithHoles));
    Write(folder, "grey.pgm", Netpbm(64, 50, 1, 255, Slopes(64, 50)));
    Write(folder, "grey5.pgm", Netpbm(33, 21, 1, 4, Slopes(33, 21, 4)));
    Write(folder, "mask.pgm", Netpbm(60, 45, 1, 255, Noise));
    Write(folder, "map17.png", PalettePng(60, 45, 17, 13));
    Write(folder, "map256.png", PalettePng(60, 45, 256, 256));
    Write(folder, "clear.png", PalettePng(60, 45, 40, 40, {0, 255, 255, 0}));

    Write(folder, "colors.zct", Triples(256, "", "", 1));
    Write(folder, "colors.pal",
          "RIFF\xAC\0\0\0PAL data\xA0\0\0\0\0\x03\x28\0"s + Triples(40, "", "\0"s, 1));
    Write(folder, "colors.zco", "\0\x01\0\x28"s + Triples(40, "\0\0"s, "\0\0"s, 2));
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fputs("usage: write_pictures FOLDER\n", stderr);
        return 2;
    }
    try {
        WriteAll(arguments[1]);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "write_pictures: %s\n", problem.what());
        return 1;
    }
    return 0;
}
