// A page from an old notebook as a scanner sees it: paper, invented letters, a diagram, a stain.
#include "Drawing.h"
#include "Samples.h"

#include <numbers>

namespace {

constexpr int kColumns = 1200, kRows = 900;
constexpr double kTilt = 0.008; // the page lay a little askew

using Page = std::vector<double>; // how much ink lies on each pixel, 0..1

void DrawStroke(Page& page, double x1, double y1, double x2, double y2, double width) {
    const auto tilted = [](double& x, double& y) {
        const double straightX = x;
        x -= y * kTilt;
        y += straightX * kTilt;
    };
    tilted(x1, y1);
    tilted(x2, y2);
    const int left = std::max(0, static_cast<int>(std::min(x1, x2) - width - 1));
    const int right = std::min(kColumns - 1, static_cast<int>(std::max(x1, x2) + width + 1));
    const int top = std::max(0, static_cast<int>(std::min(y1, y2) - width - 1));
    const int bottom = std::min(kRows - 1, static_cast<int>(std::max(y1, y2) + width + 1));
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x) {
            const double cover =
                Smooth(width / 2 + 0.7, width / 2 - 0.6, LineDistance(x, y, x1, y1, x2, y2));
            double& ink = page[PixelAt(x, y, kColumns)];
            ink = std::max(ink, cover);
        }
}

/// Part of an ellipse, angles in turns, clockwise from the right.
void DrawArc(Page& page, double x, double y, double radiusX, double radiusY, double from, double to,
             double width) {
    constexpr int kPieces = 14;
    const auto at = [&](int n, double& atX, double& atY) {
        const double angle = 2 * std::numbers::pi * std::lerp(from, to, n / double{kPieces});
        atX = x + radiusX * std::cos(angle);
        atY = y + radiusY * std::sin(angle);
    };
    for (int n = 0; n < kPieces; ++n) {
        double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        at(n, x1, y1);
        at(n + 1, x2, y2);
        DrawStroke(page, x1, y1, x2, y2, width);
    }
}

// A letter of no alphabet: bowls, stems and hooks. Returns its width.
double DrawLetter(Page& page, double x, double base, double size, int shape) {
    const double pen = size * 0.15, half = size * 0.36, middle = base - size / 2;
    const double center = x + half + pen / 2;
    const bool tall = shape % 5 == 1, deep = shape % 7 == 3;
    const double top = tall ? base - size * 1.75 : base - size;
    switch (shape % 6) {
    case 0: // bowl
        DrawArc(page, center, middle, half, size / 2, 0, 1, pen);
        break;
    case 1: // bowl with a stem
        DrawArc(page, center, middle, half, size / 2, 0, 1, pen);
        DrawStroke(page, center + half, top, center + half, base, pen * 1.1);
        break;
    case 2: // arch
        DrawStroke(page, center - half, base - size, center - half, base, pen * 1.1);
        DrawArc(page, center, base - size * 0.6, half, size * 0.4, 0.5, 1, pen);
        DrawStroke(page, center + half, base - size * 0.6, center + half, base, pen * 1.1);
        break;
    case 3: // stem
        DrawStroke(page, x + pen, top, x + pen, deep ? base + size * 0.7 : base, pen * 1.2);
        if (!tall) DrawArc(page, x + pen, base - size * 1.45, 0.5, 0.5, 0, 1, pen);
        return size * 0.45;
    case 4: // open bowl
        DrawArc(page, center, middle, half, size / 2, 0.1, 0.9, pen);
        if (deep || tall) DrawStroke(page, center - half, middle, center + half, middle, pen * 0.8);
        break;
    default: // two slants
        DrawStroke(page, center - half, base - size, center, base, pen);
        DrawStroke(page, center, base, center + half, base - size, pen * 0.8);
        if (deep)
            DrawStroke(page, center, base, center - half * 0.7, base + size * 0.65, pen * 0.8);
    }
    return size * 0.98;
}

void DrawLine(Page& page, double x, double right, double base, double size, int seed) {
    for (int word = 0;; ++word) {
        const int letters = 2 + static_cast<int>(CellNoise(word, 0, seed) * 8);
        if (x + letters * size * 0.95 > right) return;
        for (int n = 0; n < letters; ++n)
            x += DrawLetter(page, x, base + (CellNoise(word, n + 50, seed) - 0.5), size,
                            static_cast<int>(CellNoise(word, n + 1, seed) * 210));
        x += size * 0.75;
    }
}

void DrawDiagram(Page& page, double left, double bottom, double width, double height) {
    DrawStroke(page, left, bottom, left + width, bottom, 2.2);
    DrawStroke(page, left, bottom, left, bottom - height, 2.2);
    for (int n = 1; n <= 8; ++n) {
        DrawStroke(page, left + width * n / 8.4, bottom, left + width * n / 8.4, bottom + 7, 1.5);
        DrawStroke(page, left - 7, bottom - height * n / 8.4, left, bottom - height * n / 8.4, 1.5);
    }
    double lastX = left, lastY = bottom;
    for (int n = 1; n <= 60; ++n) {
        const double t = n / 60.0, x = left + width * 0.96 * t;
        const double y = bottom - height * (0.9 * Smooth(0, 0.8, t) - 0.12 * std::sin(t * 13) * t);
        DrawStroke(page, lastX, lastY, x, y, 2.6);
        if (n % 6 == 0) DrawArc(page, x, y + 14 * (CellNoise(n, 0, 5) - 0.5), 4, 4, 0, 1, 1.6);
        lastX = x;
        lastY = y;
    }
}

void DrawWriting(Page& page) {
    DrawLine(page, 150, 760, 130, 25, 31);
    DrawStroke(page, 150, 152, 640, 152, 2);
    for (int line = 0; line < 19; ++line) {
        const double left = line == 4 || line == 14 ? 185 : 150; // a paragraph begins
        double right = 1080;
        if (line == 3) right = 720;              // one ends
        if (line >= 4 && line < 14) right = 600; // beside the diagram
        DrawLine(page, left, right, 205 + 34 * line, 13, 60 + line);
    }
    DrawDiagram(page, 670, 600, 390, 235);
    DrawLine(page, 690, 1060, 632, 10, 99);
}

double Paper(double x, double y) {
    const double fibers = Cloud(x / 5, y / 3, 3, 1) - 0.5,
                 blotches = Cloud(x / 260, y / 260, 4, 2) - 0.5;
    double paper = 0.915 + fibers * 0.035 + blotches * 0.07;
    paper -= 0.16 * std::exp(-(x + y * kTilt) / 26); // the fold of the book
    paper -= 0.10 * std::exp(-(kColumns - x) / 60) + 0.06 * std::exp(-(kRows - y) / 45);
    const double cup = std::hypot(x - 985, y - 150) + 5 * (Noise(x / 40, y / 40, 3) - 0.5);
    paper -= 0.10 * std::exp(-Square((cup - 86) / 4.5)) * (0.35 + Noise(x / 50, y / 50, 4));
    paper -= 0.018 * (1 - Smooth(80, 88, cup)); // what a cup left behind
    return paper;
}

} // namespace

Sample DrawScan() {
    Page ink(std::size_t{kColumns} * kRows, 0.0);
    DrawWriting(ink);
    Sample sample = {.columns = kColumns, .rows = kRows, .colorType = PNG_COLOR_TYPE_GRAY};
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kColumns; ++x) {
            const double dry = 0.80 + 0.34 * (Cloud(x / 7.0, y / 7.0, 3, 6) - 0.5);
            const double sensor = (CellNoise(x, y, 7) - 0.5) * 0.012;
            const double cover = ink[PixelAt(x, y, kColumns)] * dry;
            sample.bytes.push_back(ToByte(std::lerp(Paper(x, y), 0.11, cover) + sensor));
        }
    return sample;
}
