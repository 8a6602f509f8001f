// A bay at evening: sky, hills, water that mirrors both, a beach with grass, and film grain.
#include "Drawing.h"
#include "Samples.h"

namespace {

constexpr int kColumns = 1920, kRows = 1080;
constexpr double kHorizon = 560, kSunX = 1310, kSunY = 448;

const Color kSunlight = {1.0, 0.82, 0.55};

Color Sky(double x, double y) {
    const double height = std::max(0.0, kHorizon - y) / kHorizon; // 0 at the horizon
    const Color low = {0.99, 0.79, 0.58}, middle = {0.63, 0.71, 0.83}, high = {0.17, 0.32, 0.58};
    Color sky = Mix(Mix(low, middle, Smooth(0, 0.42, height)), high, Smooth(0.25, 1.05, height));

    // Clouds lie in a plane overhead, hence the division; they thin out towards the horizon.
    const double nearness = 1 / (height + 0.13);
    const double u = (x - 960) / 520 * nearness, v = nearness * 2.6;
    const double drift = Cloud(u * 0.6, v * 0.6, 3, 40);
    const double density =
        Smooth(0.47, 0.74, Cloud(u * 0.7 + drift, v + drift, 7, 50)) * Smooth(0.02, 0.2, height);
    const double distance = std::hypot(x - kSunX, (y - kSunY) * 1.25);
    const double lit = std::exp(-distance / 520);
    const double thick = Smooth(0.3, 1, density);
    const Color edge = Mix({0.93, 0.88, 0.88}, {1.05, 0.88, 0.68}, lit);
    const Color core = Mix({0.56, 0.58, 0.68}, {0.86, 0.62, 0.52}, lit);
    sky = Mix(sky, Mix(edge, core, thick * 0.75), density * 0.82);

    sky = sky + kSunlight * (0.5 * std::exp(-distance / 85) + 0.2 * std::exp(-distance / 420));
    return Mix(sky, {2.6, 2.3, 1.6}, 1 - Smooth(25, 33, distance));
}

/// One range of hills, from far to near.
struct Range {
    double base, height, width; // pixels above the horizon, and of one hill
    double slope;               // pixels that it sinks over the whole picture
    Color rock, light;
    double haze;
    int seed;
};
constexpr Range kRanges[] = {{42, 190, 520, 20, {0.36, 0.40, 0.52}, {0.78, 0.66, 0.62}, 0.62, 100},
                             {30, 165, 380, 90, {0.25, 0.32, 0.38}, {0.72, 0.58, 0.46}, 0.42, 200},
                             {58, 130, 300, 210, {0.16, 0.25, 0.22}, {0.60, 0.52, 0.30}, 0.20, 300},
                             {74, 92, 230, 330, {0.08, 0.15, 0.11}, {0.44, 0.42, 0.20}, 0.05, 400}};

double CrestY(const Range& range, double x) {
    const double hill = Cloud(x / range.width, 0.5, 3, range.seed);
    const double jagged = Cloud(x / 55, 1.5, 4, range.seed + 20) - 0.5;
    return kHorizon - range.base - range.height * (hill - 0.28) * 1.25 - jagged * 13 +
           range.slope * x / kColumns;
}

// Light and shade of the ground: the height of a rough surface against that nearer the sun.
double Relief(double x, double y, const Range& range) {
    const auto ground = [&](double dx) { return Cloud((x + dx) / 64, y / 30, 7, range.seed + 40); };
    return (ground(-4) - ground(4)) * 4.5 + (ground(0) - 0.5) * 0.5 +
           (ground(-1.2) - ground(1.2)) * 5;
}

Color SkyAndHills(double x, double y) {
    for (int n = 3; n >= 0; --n) { // the nearest range hides the others
        const Range& range = kRanges[n];
        const double crest = CrestY(range, x);
        if (y < crest) continue;
        const double light = std::clamp(0.32 + Relief(x, y, range), 0.0, 1.0);
        const double low = Smooth(0, 130, y - crest); // mist gathers below
        const Color ground = Mix(range.rock, range.light, light);
        const double sun = std::exp(-std::abs(x - kSunX) / 700);
        const Color haze = Mix({0.70, 0.72, 0.80}, {1.0, 0.80, 0.60}, sun);
        return Mix(ground, haze, std::min(0.9, range.haze * (0.75 + 0.5 * low)));
    }
    return Sky(x, y);
}

Color Water(double x, double y) {
    const double depth = (y - kHorizon) / (kRows - kHorizon); // 0 at the horizon, 1 nearest
    const double distance = 1 / (depth + 0.035);
    const double u = (x - 960) / 260 * distance, v = distance * 9;
    const double swell = Cloud(u * 0.5, v * 0.9, 3, 500) - 0.5;
    const double ripple = Cloud(u * 2.2, v * 4.2, 4, 510) - 0.5;
    const double tilt = swell * 0.9 + ripple * 0.8;

    const double mirrorY = kHorizon - (y - kHorizon) * 0.93 + tilt * (30 + 150 * depth);
    const Color mirrored =
        SkyAndHills(x + ripple * 26 * (0.3 + depth), std::min(mirrorY, kHorizon));
    const Color deep = Mix({0.16, 0.33, 0.40}, {0.05, 0.20, 0.26}, depth);
    Color water = Mix(mirrored * 0.94, deep, 0.16 + 0.42 * depth + 0.3 * std::max(0.0, tilt));

    const double path = std::exp(-Square((x - kSunX) / (46 + 190 * depth)));
    const double sparkle = Smooth(0.02, 0.30, ripple + swell * 0.4);
    water = water + kSunlight * (path * (0.16 + 0.85 * sparkle) * (1 - 0.55 * depth));
    return Mix(water, {0.97, 0.82, 0.66}, 0.5 * std::exp(-depth * 26)); // haze far out
}

double ShoreY(double x) {
    return 1105 - 300 * std::exp(-Square((x + 120) / 760)) + 26 * (Cloud(x / 120, 3, 4, 600) - 0.5);
}

Color Beach(double x, double y, Color water) {
    const double inland = y - ShoreY(x); // pixels
    const double foam =
        Smooth(0.42, 0.62, Cloud(x / 26, y / 9, 4, 610)) * std::exp(-Square((inland + 7) / 11));
    if (inland < 0) return Mix(water, {0.97, 0.95, 0.93}, foam * 0.9);
    const double grain = Cloud(x / 3.0, y / 2.2, 3, 620) - 0.5,
                 dune = Cloud(x / 90, y / 34, 4, 630);
    Color sand = Mix({0.52, 0.42, 0.32}, {0.86, 0.71, 0.52}, Smooth(0.25, 0.75, dune) * 0.8);
    sand = sand * (0.92 + grain * 0.34);
    const double wet = 1 - Smooth(10, 62, inland + (dune - 0.5) * 30);
    sand = Mix(sand, Mix(sand * 0.55, water, 0.35), wet);
    return Mix(sand, {0.97, 0.95, 0.93}, foam * 0.9);
}

/// Blades of grass in the corner nearest to us.
void DrawGrass(std::vector<Color>& picture) {
    for (int blade = 0; blade < 420; ++blade) {
        const auto random = [blade](int which) { return CellNoise(blade, which, 700); };
        const double along = random(0);
        const double rootX = -30 + 620 * along * along, rootY = kRows + 60 - 55 * random(1);
        const double length = (120 + 220 * random(2)) * (1.1 - 0.6 * along);
        const double lean = 0.15 + 0.75 * (random(3) - 0.3), width = 1.3 + 2.2 * random(4);
        const Color color = Mix(Mix({0.07, 0.11, 0.05}, {0.24, 0.28, 0.10}, random(5)),
                                {0.74, 0.60, 0.28}, 0.5 * Square(random(6)));
        for (int step = 0; step < 2 * length; ++step) {
            const double t = step * 0.5 / length; // 0 at the root, 1 at the tip
            const double x = rootX + lean * length * t * t, y = rootY - length * t * (1 - 0.2 * t);
            const double half = width * (1 - t) + 0.35;
            for (int column = static_cast<int>(x - half); column <= static_cast<int>(x + half + 1);
                 ++column) {
                const int row = static_cast<int>(y);
                if (column < 0 || column >= kColumns || row < 0 || row >= kRows) continue;
                const double cover = std::clamp(half + 0.5 - std::abs(column - x), 0.0, 1.0);
                Color& pixel = picture[PixelAt(column, row, kColumns)];
                pixel = Mix(pixel, color * (0.75 + 0.6 * t), cover * 0.8);
            }
        }
    }
}

// Slightly darker corners, more contrast, and grain.
Color Develop(Color color, int x, int y) {
    const double corner = Square((x - 960) / 960.0) + Square((y - 540) / 540.0);
    const double grain = (CellNoise(x, y, 800) + CellNoise(x, y, 801) - 1) * 0.018;
    const auto curve = [&](double level) {
        const double shown = 1 - std::exp(-1.9 * std::max(0.0, level * (1 - 0.11 * corner)));
        return std::lerp(shown, Smooth(0, 1, shown), 0.55) + grain;
    };
    return {curve(color.red), curve(color.green), curve(color.blue)};
}

} // namespace

Sample DrawCoast() {
    std::vector<Color> picture;
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kColumns; ++x)
            picture.push_back(y < kHorizon ? SkyAndHills(x, y) : Beach(x, y, Water(x, y)));
    DrawGrass(picture);

    Sample sample = {.columns = kColumns, .rows = kRows, .comment = "A bay at evening"};
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kColumns; ++x) {
            const Color color = Develop(picture[PixelAt(x, y, kColumns)], x, y);
            for (const double level : {color.red, color.green, color.blue})
                sample.bytes.push_back(ToByte(level));
        }
    return sample;
}
