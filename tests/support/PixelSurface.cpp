#include "PixelSurface.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr short kAscent = 9, kDescent = 2, kLeading = 1;
constexpr int kCharacterWidth = 6;

std::uint32_t ColorAt(int v, int h, const Ink& ink) {
    switch (ink.kind) {
    case Ink::Kind::black:
        return PixelSurface::kBlack;
    case Ink::Kind::white:
        return PixelSurface::kWhite;
    case Ink::Kind::background:
        return PixelSurface::kBackground;
    case Ink::Kind::color:
        return ink.color.red / 256U * 65536U + ink.color.green / 256U * 256U +
               ink.color.blue / 256U;
    case Ink::Kind::pattern:
        break;
    }
    const bool isBlack = (ink.pattern[v & 7] >> (7 - (h & 7)) & 1) != 0;
    return isBlack ? PixelSurface::kBlack : PixelSurface::kWhite;
}

} // namespace

PixelSurface::PixelSurface(int rowCount, int columnCount) : rows(rowCount), columns(columnCount) {
    Clear();
}

std::uint32_t PixelSurface::At(int v, int h) const {
    return pixels.at(static_cast<std::size_t>(v * columns + h));
}

void PixelSurface::Clear() {
    pixels.assign(static_cast<std::size_t>(rows * columns), kBackground);
}

std::vector<std::string> PixelSurface::Rows(const std::map<std::uint32_t, char>& colors) const {
    std::map<std::uint32_t, char> letters = {{kBlack, '#'}, {kWhite, 'o'}, {kBackground, '.'}};
    letters.insert(colors.begin(), colors.end());
    std::vector<std::string> text(static_cast<std::size_t>(rows));
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto letter = letters.find(pixels[i]);
        text[i / static_cast<std::size_t>(columns)] +=
            letter == letters.end() ? '?' : letter->second;
    }
    return text;
}

void PixelSurface::Put(int v, int h, std::uint32_t color) {
    if (v >= 0 && v < rows && h >= 0 && h < columns)
        pixels[static_cast<std::size_t>(v * columns + h)] = color;
}

void PixelSurface::Fill(const Rect& rect, const Ink& ink) {
    for (int v = rect.top; v < rect.bottom; ++v)
        for (int h = rect.left; h < rect.right; ++h) Put(v, h, ColorAt(v, h, ink));
}

void PixelSurface::Line(Point from, Point to, const Ink& ink) {
    const int dv = to.v - from.v, dh = to.h - from.h;
    const int steps = std::max({std::abs(dv), std::abs(dh), 1});
    for (int i = 0; i <= steps; ++i) {
        const int v = from.v + dv * i / steps, h = from.h + dh * i / steps;
        Put(v, h, ColorAt(v, h, ink));
    }
}

int PixelSurface::Text(Point, const std::string& text, short, short) {
    return static_cast<int>(text.size()) * kCharacterWidth;
}

void PixelSurface::Metrics(short, short, short* ascent, short* descent, short* leading) {
    *ascent = kAscent;
    *descent = kDescent;
    *leading = kLeading;
}

void PixelSurface::Image(const Rect& rect, const ColorPixels& source) {
    const int height = rect.bottom - rect.top, width = rect.right - rect.left;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int row = (2 * y + 1) * source.rows / (2 * height);
            const int column = (2 * x + 1) * source.columns / (2 * width);
            Put(rect.top + y, rect.left + x,
                source.pixels[static_cast<std::size_t>(row * source.columns + column)]);
        }
}
