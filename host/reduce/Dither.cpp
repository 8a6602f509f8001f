#include "Dither.h"

#include "Diffusion.h"
#include "NearestEntry.h"
#include "PaletteColors.h"
#include "Thresholds.h"

namespace gif89 {
namespace {

constexpr std::uint32_t kNoColor = ~0U;

/// Calls `map` for each opaque pixel with its colour, red in the lowest byte, and where it is.
template <int kBytes, typename Map>
void MapEach(const Pixels& pixels, int hidden, std::uint8_t* indices, Map map) {
    const std::uint8_t* pixel = pixels.bytes;
    for (int y = 0; y < pixels.rows; ++y)
        for (int x = 0; x < pixels.columns; ++x, pixel += kBytes) {
            const bool visible = kBytes == 3 || pixel[kBytes - 1] >= pixels.visibleFrom;
            const auto color =
                static_cast<std::uint32_t>(pixel[0] | pixel[1] << 8 | pixel[2] << 16);
            *indices++ = static_cast<std::uint8_t>(visible ? map(color, y, x) : hidden);
        }
}

template <typename Map>
void MapEach(const Pixels& pixels, int hidden, std::uint8_t* indices, Map map) {
    if (pixels.bytesPerPixel == 3)
        MapEach<3>(pixels, hidden, indices, map);
    else
        MapEach<4>(pixels, hidden, indices, map);
}

void MapToNearest(const Pixels& pixels, const Target& target, std::uint8_t* indices) {
    NearestEntry nearest(target);
    std::uint32_t last = kNoColor;
    int entry = 0;
    MapEach(pixels, target.hidden, indices, [&](std::uint32_t color, int, int) {
        if (color == last) return entry;
        last = color;
        return entry = nearest.Find(ColorVector::Widen(color, 0));
    });
}

/// Two entries between which a colour lies, and how much of the second is in it.
struct Mixture {
    int first, second;
    int share; ///< 0..kWhole
};
constexpr int kWhole = 1 << 12;

/// Mixes colours of two entries each.
class Mixer {
  public:
    explicit Mixer(const Target& target) : palette(target.palette), nearest(target) {}

    Mixture Mix(std::uint32_t color) {
        const int level[] = {static_cast<int>(color & 0xFF), static_cast<int>(color >> 8 & 0xFF),
                             static_cast<int>(color >> 16)};
        const int first = nearest.Find(ColorVector::Widen(color, 0));
        const auto a = LevelsOf(first);
        // The other entry is looked for on the far side of the colour, farther and farther.
        for (int factor = 1; factor <= kFarthest; factor *= 2) {
            std::int16_t beyond[4] = {};
            for (std::size_t c = 0; c < 3; ++c)
                beyond[c] = static_cast<std::int16_t>(
                    std::clamp(level[c] + (level[c] - a[c]) * factor, 0, 255));
            const int second = nearest.Find(ColorVector::Load(beyond));
            if (second == first) continue;
            const auto b = LevelsOf(second);
            int along = 0, length = 0;
            for (std::size_t c = 0; c < 3; ++c) {
                along += (level[c] - a[c]) * (b[c] - a[c]);
                length += (b[c] - a[c]) * (b[c] - a[c]);
            }
            if (along <= 0) return {first, first, 0};
            return {first, second, static_cast<int>(std::int64_t{along} * kWhole / length)};
        }
        return {first, first, 0};
    }

  private:
    static constexpr int kFarthest = 8;

    std::array<int, 3> LevelsOf(int entry) const {
        const Color& color = palette[static_cast<std::size_t>(entry)];
        return {color.red, color.green, color.blue};
    }

    const Palette& palette;
    NearestEntry nearest;
};

/// `thresholds` has a value of 0..kWhole - 1 for each pixel of a square that is laid side by side.
void MapInPattern(const Pixels& pixels, const Target& target, int amount,
                  const Thresholds& thresholds, std::uint8_t* indices) {
    Mixer mixer(target);
    const PaletteColors inPalette(target);
    std::uint32_t last = kNoColor;
    Mixture mixture = {};
    MapEach(pixels, target.hidden, indices, [&](std::uint32_t color, int y, int x) {
        if (color != last) {
            last = color;
            const int entry = inPalette.Find(color);
            mixture = entry >= 0 ? Mixture{entry, entry, 0} : mixer.Mix(color);
        }
        // A weaker pattern has each entry nearer to its own half.
        const int share = kWhole / 2 + (thresholds.At(y, x) - kWhole / 2) * amount / 100;
        return mixture.share > share ? mixture.second : mixture.first;
    });
}

} // namespace

void MapPixels(const Pixels& pixels, const Target& target, Dithering dithering, int amount,
               std::uint8_t* indices) {
    if (dithering == Dithering::none || amount == 0) return MapToNearest(pixels, target, indices);
    if (dithering == Dithering::diffusion) return DiffusePixels(pixels, target, amount, indices);
    static_assert(Thresholds::kLevels == kWhole);
    const Thresholds thresholds =
        dithering == Dithering::ordered ? Thresholds::Ordered() : Thresholds::BlueNoise();
    MapInPattern(pixels, target, amount, thresholds, indices);
}

} // namespace gif89
