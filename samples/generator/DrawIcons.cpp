// Two emblems: one with soft alpha, one with a palette whose entries are more or less transparent.
#include "Drawing.h"
#include "Samples.h"

#include <numbers>

namespace {

// How much of a pixel lies inside an edge at that distance.
double Cover(double distance) {
    return std::clamp(0.5 - distance, 0.0, 1.0);
}

constexpr int kIconSide = 256;

Color IconFace(double x, double y) {
    const double down = (y + 92) / 184;
    Color face = Mix({0.13, 0.72, 0.86}, {0.11, 0.30, 0.74}, Smooth(-0.1, 1.05, down));
    const double sun = std::hypot(x - 26, y + 28);
    face = Mix(face, {1.0, 0.93, 0.62}, 0.5 * std::exp(-std::max(0.0, sun - 34) / 26));
    face =
        Mix(face, Mix({1.0, 0.86, 0.35}, {1.0, 0.62, 0.24}, Smooth(-70, 10, y)), Cover(sun - 35));
    constexpr Color kWaves[] = {{0.55, 0.88, 0.95}, {0.20, 0.62, 0.88}, {0.08, 0.25, 0.62}};
    for (int n = 0; n < 3; ++n) {
        const double crest = 6 + n * 27 + 9 * std::sin(x / 21 + n * 2.1);
        face =
            Mix(face, Mix(kWaves[n], kWaves[n] * 0.8, Smooth(0, 60, y - crest)), Cover(crest - y));
    }
    // A reflection over the upper half.
    const double gloss = Cover(std::hypot(x / 1.5, y + 150) - 128) * (1 - Smooth(-95, -10, y));
    return Mix(face, {1, 1, 1}, 0.28 * gloss);
}

constexpr int kBadgeSide = 160;
constexpr int kReds = 24, kGolds = 16, kCreams = 8, kShadows = 12; // entries of the palette
constexpr int kFirstRed = 1 + kShadows, kFirstGold = kFirstRed + kReds,
              kFirstCream = kFirstGold + kGolds;

void AddShades(Sample& sample, Color dark, Color light, int count) {
    for (int n = 0; n < count; ++n) {
        const Color shade = Mix(dark, light, n / (count - 1.0));
        sample.palette.push_back({ToByte(shade.red), ToByte(shade.green), ToByte(shade.blue)});
    }
}

int Shade(int first, int count, double level) {
    return first + static_cast<int>(std::lround(std::clamp(level, 0.0, 1.0) * (count - 1)));
}

// Distance from the edge of a star of five points, whose outer points lie on a circle of radius 1.
double StarDistance(double x, double y) {
    constexpr double kFifth = 2 * std::numbers::pi / 5;
    double angle = std::fmod(std::atan2(x, -y) + 10 * kFifth, kFifth);
    angle = std::min(angle, kFifth - angle); // between a point and the notch beside it
    const double radius = std::hypot(x, y), u = radius * std::cos(angle),
                 v = radius * std::sin(angle);
    const double notchX = 0.46 * std::cos(kFifth / 2), notchY = 0.46 * std::sin(kFifth / 2);
    const double edgeX = notchX - 1, edgeY = notchY;
    return ((u - 1) * -edgeY + v * edgeX) / -std::hypot(edgeX, edgeY);
}

int BadgePixel(double x, double y) {
    const double radius = std::hypot(x, y), slant = (-x - y) / 150; // light from the upper left
    const double scallop = 62 + 3.2 * std::cos(std::atan2(y, x) * 24);
    if (radius < scallop) {
        if (radius > 52 + 0.8)
            return Shade(kFirstGold, kGolds, 0.5 + slant * 0.9 - Square((radius - 57) / 7) * 0.35);
        if (radius > 49) return Shade(kFirstGold, kGolds, 0.25 - slant * 0.6);
        const double star = StarDistance(x / 40, y / 40) * 40;
        if (star < 0) return Shade(kFirstCream, kCreams, 0.75 + slant * 0.6 + star / 40);
        const double rays = 0.07 * std::cos(std::atan2(y, x) * 20);
        return Shade(kFirstRed, kReds,
                     0.55 + slant * 0.7 + rays - (star < 3.5 ? 0.35 : 0) - Square(radius / 90));
    }
    const double shadow = 1 - Smooth(54, 76, std::hypot(x - 3, y - 6));
    return shadow <= 0 ? 0 : Shade(0, kShadows + 1, shadow * 0.95);
}

} // namespace

Sample DrawSoftIcon() {
    Sample sample = {
        .columns = kIconSide, .rows = kIconSide, .colorType = PNG_COLOR_TYPE_RGB_ALPHA};
    for (int row = 0; row < kIconSide; ++row)
        for (int column = 0; column < kIconSide; ++column) {
            const double x = column - 127.5, y = row - 121.5;
            const double face = Cover(RoundRectDistance(x, y, 92, 42));
            const double shadow = 0.5 * (1 - Smooth(-22, 26, RoundRectDistance(x, y - 12, 88, 44)));
            const double opacity = face + shadow * (1 - face);
            // Not multiplied by the opacity, as the format wants it.
            const Color color =
                opacity > 0 ? Mix({0.04, 0.07, 0.16}, IconFace(x, y), face / opacity) : Color{};
            for (const double level : {color.red, color.green, color.blue, opacity})
                sample.bytes.push_back(ToByte(level));
        }
    return sample;
}

Sample DrawPaletteBadge() {
    Sample sample = {
        .columns = kBadgeSide, .rows = kBadgeSide, .colorType = PNG_COLOR_TYPE_PALETTE};
    AddShades(sample, {0.1, 0.09, 0.14}, {0.1, 0.09, 0.14}, 1 + kShadows);
    for (int n = 0; n <= kShadows; ++n) sample.opacities.push_back(ToByte(n * 0.6 / kShadows));
    AddShades(sample, {0.28, 0.02, 0.06}, {0.95, 0.25, 0.22}, kReds);
    AddShades(sample, {0.42, 0.25, 0.05}, {1.0, 0.91, 0.55}, kGolds);
    AddShades(sample, {0.86, 0.74, 0.52}, {1.0, 0.98, 0.90}, kCreams);
    for (int row = 0; row < kBadgeSide; ++row)
        for (int column = 0; column < kBadgeSide; ++column)
            sample.bytes.push_back(
                static_cast<std::uint8_t>(BadgePixel(column - 79.5, row - 77.5)));
    return sample;
}
