#include "ColorCount.h"

#include <memory>

namespace gif89 {
namespace {

constexpr std::uint32_t kNoColor = ~0U;
constexpr std::size_t kMostWeighted = std::size_t{1} << 28;

constexpr std::uint32_t kSmoothWeight = 3;
constexpr int kSmoothStep = 5; ///< between neighbours in a smooth area, in levels

/// 1 when no channel differs by more than kSmoothStep, else 0. Without branches, since no processor
/// could foresee them.
std::uint32_t IsSmoothStep(const std::uint8_t* a, const std::uint8_t* b) {
    std::uint32_t smooth = 1;
    for (int c = 0; c < 3; ++c)
        smooth &= static_cast<std::uint32_t>(a[c] - b[c] + kSmoothStep) <= 2 * kSmoothStep;
    return smooth;
}

constexpr std::uint8_t kBlack[3] = {};

/// A walk over a picture's opaque pixels, which can stop and go on.
template <int kBytes> class PixelWalk {
  public:
    explicit PixelWalk(const Pixels& pixels)
        : pixel(pixels.bytes), end(pixel + pixels.Count() * kBytes),
          visibleFrom(pixels.visibleFrom),
          // The sums of the largest pictures have no room for more.
          moreWhenSmooth(pixels.Count() < kMostWeighted ? kSmoothWeight - 1 : 0) {}

    /// Calls `take` with the packed colour and the weight of each pixel. When that says false, the
    /// walk stops in front of the pixel; false then.
    template <typename Take> bool GoOn(Take take) {
        for (; pixel < end; pixel += kBytes) {
            if (kBytes == 4 && pixel[kBytes - 1] < visibleFrom) {
                transparent = true;
                continue;
            }
            const auto color =
                static_cast<std::uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
            if (!take(color, 1 + IsSmoothStep(pixel, last) * moreWhenSmooth)) return false;
            last = pixel;
        }
        return true;
    }
    bool FoundTransparent() const { return transparent; }

  private:
    const std::uint8_t* pixel;
    const std::uint8_t* const end;
    const std::uint8_t* last = kBlack; ///< the opaque pixel before
    const int visibleFrom;
    const std::uint32_t moreWhenSmooth;
    bool transparent = false;
};

/// Counts colours in an open-addressed table that is never more than half full.
class ExactCounter {
  public:
    /// False when there would be too many colours.
    bool Add(std::uint32_t color, std::uint32_t weight) {
        if (color == last) {
            weights[lastPoint] += weight;
            return true;
        }
        last = color;
        std::size_t place = (color * 2654435761U) >> (32 - kPlaceBits);
        for (; places[place] != 0; place = (place + 1) & (kPlaces - 1))
            if (colors[places[place] - 1U] == color) {
                lastPoint = places[place] - 1U;
                weights[lastPoint] += weight;
                return true;
            }
        if (colors.size() == kMostExactColors) return false;
        lastPoint = colors.size();
        colors.push_back(color);
        weights.push_back(weight);
        places[place] = static_cast<std::uint16_t>(colors.size());
        return true;
    }

    std::vector<ColorPoint> Points() const {
        std::vector<ColorPoint> points;
        points.reserve(colors.size());
        for (std::size_t n = 0; n < colors.size(); ++n) {
            const Color color = Color::Unpack(colors[n]);
            const auto steps = [](int level) {
                return static_cast<std::int16_t>(level * kStepsPerLevel);
            };
            points.push_back(
                {{steps(color.red), steps(color.green), steps(color.blue)}, weights[n]});
        }
        return points;
    }

    /// Counts what was counted so far in a coarser way.
    template <typename Counter> void PourInto(Counter& other) const {
        for (std::size_t n = 0; n < colors.size(); ++n) other.Add(colors[n], weights[n]);
    }

  private:
    static constexpr int kPlaceBits = 15;
    static constexpr std::size_t kPlaces = std::size_t{1} << kPlaceBits;
    std::vector<std::uint16_t> places =
        std::vector<std::uint16_t>(kPlaces); ///< point + 1; 0 is free
    std::vector<std::uint32_t> colors, weights;
    std::uint32_t last = kNoColor;
    std::size_t lastPoint = 0;
};

/// Counts the pixels whose channels agree in their six upper bits.
class CellCounter {
  public:
    void Add(std::uint32_t color, std::uint32_t weight) {
        Cell& cell = cells[(color >> 6 & 0x3F000) | (color >> 4 & 0xFC0) | (color >> 2 & 0x3F)];
        cell.redGreen += weight * ((color >> 16 & 3) | std::uint64_t{color >> 8 & 3} << 32);
        cell.blueWeight += weight * ((color & 3) | std::uint64_t{1} << 32);
    }

    std::vector<ColorPoint> Points() const {
        std::vector<ColorPoint> points;
        for (std::size_t place = 0; place < kCells; ++place)
            if (cells[place].blueWeight > 0) points.push_back(MeanOf(cells[place], place));
        return points;
    }

  private:
    /// Sums of the channels' two lower bits, so that the largest picture cannot overflow them; two
    /// in a number, the second in its upper half, are added in one step.
    struct Cell {
        std::uint64_t redGreen, blueWeight;
    };
    static constexpr std::size_t kCells = std::size_t{1} << 18;

    static ColorPoint MeanOf(const Cell& cell, std::size_t place) {
        const std::uint64_t weight = cell.blueWeight >> 32;
        const std::uint64_t sums[] = {cell.redGreen & 0xFFFFFFFF, cell.redGreen >> 32,
                                      cell.blueWeight & 0xFFFFFFFF};
        ColorPoint point = {{}, static_cast<std::uint32_t>(weight)};
        for (int c = 0; c < 3; ++c) {
            const auto high = static_cast<int>(place >> (12 - 6 * c) & 63) * 4 * kStepsPerLevel;
            const std::uint64_t low = (sums[c] * kStepsPerLevel + weight / 2) / weight;
            point.channels[c] = static_cast<std::int16_t>(high + static_cast<int>(low));
        }
        return point;
    }

    const std::unique_ptr<Cell[]> cells = std::make_unique<Cell[]>(kCells);
};

template <int kBytes> ColorCount CountPoints(const Pixels& pixels) {
    PixelWalk<kBytes> walk(pixels);
    ColorCount count;
    ExactCounter exact;
    count.exact = walk.GoOn(
        [&](std::uint32_t color, std::uint32_t weight) { return exact.Add(color, weight); });
    if (count.exact) {
        count.points = exact.Points();
    } else {
        CellCounter cells;
        exact.PourInto(cells);
        walk.GoOn([&](std::uint32_t color, std::uint32_t weight) {
            cells.Add(color, weight);
            return true;
        });
        count.points = cells.Points();
    }
    count.transparent = walk.FoundTransparent();
    return count;
}

} // namespace

ColorCount CountColorPoints(const Pixels& pixels) {
    return pixels.bytesPerPixel == 3 ? CountPoints<3>(pixels) : CountPoints<4>(pixels);
}

} // namespace gif89
