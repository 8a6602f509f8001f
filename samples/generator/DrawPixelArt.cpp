// A small scene for a game of long ago: a house by a lake under the moon, in 16 colours.
#include "Drawing.h"
#include "Samples.h"

#include <string_view>

namespace {

constexpr int kColumns = 64, kRows = 48, kScale = 4;
constexpr int kShoreRow = 38;

// Named by the letters that the sprites are drawn with.
struct Ink {
    char letter;
    std::uint8_t red, green, blue;
};
constexpr Ink kInks[] = {
    {'k', 20, 18, 38},   {'n', 34, 32, 76},    {'b', 52, 58, 124},   {'v', 98, 74, 148},
    {'p', 168, 92, 150}, {'o', 238, 140, 118}, {'y', 255, 214, 132}, {'w', 255, 248, 224},
    {'m', 48, 52, 92},   {'g', 28, 74, 66},    {'G', 62, 128, 78},   {'l', 142, 184, 88},
    {'r', 150, 50, 62},  {'R', 206, 88, 78},   {'t', 112, 72, 62},   {'T', 182, 130, 96}};

using Scene = std::vector<char>; // a letter a pixel

char& At(Scene& scene, int x, int y) {
    return scene[PixelAt(x, y, kColumns)];
}

void DrawSky(Scene& scene) {
    constexpr std::string_view kBands = "nbvpoy";
    for (int y = 0; y < kShoreRow; ++y)
        for (int x = 0; x < kColumns; ++x) {
            // Two neighbouring bands are mixed by an ordered pattern.
            constexpr double kPattern[2][2] = {{0.2, 0.7}, {0.95, 0.45}};
            const double band = Square(y / 37.0) * 0.55 * 5 + y / 37.0 * 0.45 * 5;
            const auto index = static_cast<std::size_t>(band + kPattern[y % 2][x % 2] * 0.9);
            At(scene, x, y) = kBands[std::min(index, kBands.size() - 1)];
        }
    for (int star = 0; star < 22; ++star)
        At(scene, static_cast<int>(CellNoise(star, 0, 9) * kColumns),
           static_cast<int>(CellNoise(star, 1, 9) * 17)) = star % 3 ? 'v' : 'w';
}

void DrawHills(Scene& scene) {
    for (int x = 0; x < kColumns; ++x) {
        const double far = 27 - 9 * std::abs(std::sin(x / 9.0 + 0.9)) - 2 * std::sin(x / 3.1);
        const double near = 33 - 4 * std::sin(x / 11.0 + 2.2) - CellNoise(x / 2, 0, 3);
        for (int y = 0; y < kShoreRow; ++y) {
            if (y >= far) At(scene, x, y) = y < far + 2 && x % 3 ? 'v' : 'm';
            if (y >= near) At(scene, x, y) = y < near + 1 ? 'G' : 'g';
        }
    }
}

void DrawSprite(Scene& scene, int left, int top, std::initializer_list<std::string_view> lines) {
    for (const std::string_view line : lines) {
        for (int n = 0; const char letter : line) {
            if (letter != '.') At(scene, left + n, top) = letter;
            ++n;
        }
        ++top;
    }
}

void DrawThings(Scene& scene) {
    DrawSprite(scene, 45, 4,
               {"..wwww..", ".wwwyww.", "wwwwwwww", "wywwwwww", "wwwwwyww", "wwywwwww", ".wwwwww.",
                "..wwww.."});
    DrawSprite(scene, 14, 23,
               {".......tt.......", ".....rrttrr.....", "....rRRRRRRr....", "...rRRRRRRRRr...",
                "..rRRRRRRRRRRr..", ".rRRRRRRRRRRRRr.", "rrrrrrrrrrrrrrrr", ".TTTTTTTTTTTTTt.",
                ".TyyTTTTTTTyyTt.", ".TywTTttttTywTt.", ".TyyTTtTTtTyyTt.", ".TTTTTtTTtTTTTt.",
                ".TTTTTtTytTTTTt.", ".tTTTTtTTtTTTtt.", "GlGGlGttttGlGGlG"});
    for (const int left : {3, 33, 40, 54})
        DrawSprite(scene, left, left % 2 ? 22 : 24,
                   {"....g....", "....G....", "...gGl...", "...gGl...", "..ggGGl..", "...gGl...",
                    "..ggGGl..", ".gggGGGl.", "..ggGGl..", ".gggGGGl.", "ggggGGGll", "....t....",
                    "....t....", "....t...."});
    DrawSprite(scene, 31, 31, {".oo.", ".yy.", "RRRR", "oRRo", ".nn.", ".nn.", ".k.k"});
}

// The lower rows are the upper ones upside down, darker and shifted by the waves.
void DrawLake(Scene& scene) {
    constexpr std::string_view kLit = "nbvpoywgGlRTmt", kDark = "knbvppymgGrtnk";
    for (int y = kShoreRow; y < kRows; ++y)
        for (int x = 0; x < kColumns; ++x) {
            const int shift = (y % 2 ? 1 : -1) * ((y - kShoreRow) / 4);
            const int from = std::clamp(x + shift, 0, kColumns - 1);
            const char lit = At(scene, from, kShoreRow - 1 - (y - kShoreRow) * 3 / 2);
            const auto found = kLit.find(lit);
            At(scene, x, y) = found == std::string_view::npos ? 'k' : kDark[found];
            if (CellNoise((x + y * 5) / 7, y, 21) < 0.12) At(scene, x, y) = 'b';
        }
    for (int y = kShoreRow; y < kRows; y += 2) { // the moon's path
        const auto random = [y](int which) {
            return static_cast<int>(CellNoise(which, y, 31) * 4);
        };
        for (int x = 45 + random(0); x < 49 + random(1); ++x) At(scene, x, y) = 'y';
        At(scene, 42 + random(2), y + 1) = At(scene, 49 + random(3), y + 1) = 'o';
    }
}

} // namespace

Sample DrawPixelArt() {
    Scene scene(std::size_t{kColumns} * kRows, 'k');
    DrawSky(scene);
    DrawHills(scene);
    DrawThings(scene);
    DrawLake(scene);

    Sample sample = {.columns = kColumns * kScale, .rows = kRows * kScale};
    for (int y = 0; y < sample.rows; ++y)
        for (int x = 0; x < sample.columns; ++x) {
            const char letter = At(scene, x / kScale, y / kScale);
            const auto* const ink =
                std::find_if(std::begin(kInks), std::end(kInks),
                             [letter](const Ink& each) { return each.letter == letter; });
            for (const std::uint8_t level : {ink->red, ink->green, ink->blue})
                sample.bytes.push_back(level);
        }
    return sample;
}
