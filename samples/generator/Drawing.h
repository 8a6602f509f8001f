// Colours, noise and soft edges that the sample pictures are drawn with.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Red, green and blue, 0..1 when shown; more while light is added up.
struct Color {
    double red = 0, green = 0, blue = 0;
};
inline Color operator+(Color a, Color b) {
    return {a.red + b.red, a.green + b.green, a.blue + b.blue};
}
inline Color operator*(Color a, double factor) {
    return {a.red * factor, a.green * factor, a.blue * factor};
}
inline Color Mix(Color a, Color b, double share) {
    return a * (1 - share) + b * share;
}

inline std::uint8_t ToByte(double level) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(level, 0.0, 1.0) * 255));
}

/// 0 below `low`, 1 above `high`, smooth between.
inline double Smooth(double low, double high, double value) {
    const double t = std::clamp((value - low) / (high - low), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}
inline std::size_t PixelAt(int x, int y, int columns) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
           static_cast<std::size_t>(x);
}
inline double Square(double value) {
    return value * value;
}

/// A repeatable random number, 0..1, for a cell of an endless grid.
inline double CellNoise(int x, int y, int seed) {
    auto bits = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^
                static_cast<std::uint32_t>(y) * 0x85EBCA77U ^
                static_cast<std::uint32_t>(seed) * 0xC2B2AE3DU;
    bits = (bits ^ bits >> 15) * 0x2C1B3C6DU;
    bits = (bits ^ bits >> 12) * 0x297A2D39U;
    return static_cast<double>(bits ^ bits >> 15) / 4294967296.0;
}

/// Soft noise, 0..1, with hills about one unit wide.
inline double Noise(double x, double y, int seed) {
    const double left = std::floor(x), top = std::floor(y);
    const int column = static_cast<int>(left), row = static_cast<int>(top);
    const double u = Smooth(0, 1, x - left), v = Smooth(0, 1, y - top);
    const auto line = [&](int which) {
        return std::lerp(CellNoise(column, which, seed), CellNoise(column + 1, which, seed), u);
    };
    return std::lerp(line(row), line(row + 1), v);
}

/// Noise with finer and fainter noise on top, about 0..1 around 0.5.
inline double Cloud(double x, double y, int octaves, int seed) {
    double sum = 0, weight = 0.5, weights = 0;
    for (int octave = 0; octave < octaves; ++octave, weight /= 2) {
        sum += weight * Noise(x, y, seed + octave);
        weights += weight;
        x = x * 2.03 + 17.3; // not quite 2, so that the grids do not line up
        y = y * 2.03 + 5.7;
    }
    return sum / weights;
}

/// Distance from a point to a line from one point to another.
inline double LineDistance(double x, double y, double x1, double y1, double x2, double y2) {
    const double dx = x2 - x1, dy = y2 - y1;
    const double along =
        std::clamp(((x - x1) * dx + (y - y1) * dy) / std::max(1e-9, dx * dx + dy * dy), 0.0, 1.0);
    return std::hypot(x - x1 - along * dx, y - y1 - along * dy);
}

/// Distance from the edge of a rectangle with round corners around 0, 0; negative inside.
inline double RoundRectDistance(double x, double y, double halfSide, double radius) {
    const double dx = std::abs(x) - halfSide + radius, dy = std::abs(y) - halfSide + radius;
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) -
           radius;
}
