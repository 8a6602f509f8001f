// Error diffusion, several rows at a time. The plain version, pixel after pixel, is PlainReduce
// among the tests.
#include "Diffusion.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace gif89 {
namespace {

static_assert((-1 >> 1) == -1, "errors are split by arithmetic shifts");

// Errors are in sixteenths of a level.
constexpr int kErrorBits = 4;

/// What a row needs from its last two pixels.
struct Tail {
    ColorVector last = ColorVector::Zero(), lastButOne = ColorVector::Zero();

    void Push(ColorVector error) {
        lastButOne = last;
        last = error;
    }
};

/// Rows that run in the same direction, each two pixels behind the one above it. Then the errors it
/// needs from above are known, and no row's step waits for another's: the processor works on all
/// of them at once, where one row alone has it wait at every pixel.
constexpr int kRowsTogether = 4;
constexpr int kLag = 2;

template <int kBytes> std::uint32_t LoadColor(const std::uint8_t* pixel) {
    return static_cast<std::uint32_t>(pixel[0] | pixel[1] << 8 | pixel[2] << 16);
}

/// One picture on its way.
class Diffusion {
  public:
    Diffusion(const Pixels& thePixels, const Target& target, const DiffusionSettings& settings,
              int amount, std::uint8_t* theIndices)
        : pixels(thePixels), indices(theIndices), nearest(target), inPalette(target),
          hidden(static_cast<std::uint8_t>(target.hidden)),
          strength(ColorVector::Splat(settings.strength * amount / 100)),
          mostError(ColorVector::Splat(settings.mostError << kErrorBits)),
          leastError(ColorVector::Splat(-(settings.mostError << kErrorBits))),
          errors((static_cast<std::size_t>(thePixels.columns) + 2) * 4) {
        for (std::size_t n = 0; n < target.palette.size(); ++n) {
            const Color& color = target.palette[n];
            levels[n][0] = static_cast<std::int16_t>(color.red << kErrorBits);
            levels[n][1] = static_cast<std::int16_t>(color.green << kErrorBits);
            levels[n][2] = static_cast<std::int16_t>(color.blue << kErrorBits);
        }
    }

    template <int kBytes> void Run() {
        for (int y = 0, turn = 0; y < pixels.rows; ++turn) {
            const bool together = y + kRowsTogether <= pixels.rows;
            const bool back = turn % 2 == 1;
            if (together)
                back ? Rows<kBytes, -1, kRowsTogether>(y) : Rows<kBytes, 1, kRowsTogether>(y);
            else
                back ? Rows<kBytes, -1, 1>(y) : Rows<kBytes, 1, 1>(y);
            y += together ? kRowsTogether : 1;
        }
    }

  private:
    static constexpr int kSpread = 14746; ///< a quarter of 0.9 in 1/65536

    // Half of what the pixel before leaves, a quarter each of the pixels above and above ahead.
    ColorVector Gather(ColorVector before, ColorVector above, ColorVector aboveAhead) const {
        const ColorVector sum = before + before + above + aboveAhead + ColorVector::Splat(2);
        return sum.TimesFraction(ColorVector::Splat(kSpread)).Clamp(leastError, mostError);
    }

    /// The error that the pixel leaves.
    template <int kBytes>
    ColorVector Map(const std::uint8_t* pixel, std::uint8_t* index, ColorVector reached) {
        if (kBytes == 4 && pixel[kBytes - 1] < pixels.visibleFrom) {
            *index = hidden;
            return ColorVector::Zero();
        }
        const std::uint32_t color = LoadColor<kBytes>(pixel);
        if (const int entry = inPalette.Find(color); entry >= 0) {
            *index = static_cast<std::uint8_t>(entry);
            return ColorVector::Zero();
        }
        const ColorVector exact = ColorVector::Widen(color, kErrorBits);
        const ColorVector wanted =
            exact + reached.TimesFraction(strength) + ColorVector::Splat(1 << (kErrorBits - 1));
        const int entry = nearest.Find(
            (wanted >> kErrorBits).Clamp(ColorVector::Zero(), ColorVector::Splat(255)));
        *index = static_cast<std::uint8_t>(entry);
        return exact + reached - ColorVector::Load(levels[entry]);
    }

    /// Maps kRows rows from row y on, in one direction.
    template <int kBytes, int kStep, int kRows> void Rows(int y) {
        const std::ptrdiff_t columns = pixels.columns;
        const std::ptrdiff_t first = kStep > 0 ? 0 : columns - 1;
        const std::uint8_t* const from = pixels.Row(y) + first * kBytes;
        std::uint8_t* const to = indices + y * columns + first;
        std::int16_t* const carried = errors.data() + (first + 1) * 4; // a spare one on either side
        Tail tails[kRows];

        const auto advance = [&](auto inside, std::ptrdiff_t at) {
            constexpr bool kInside = decltype(inside)::value;
// Unrolled, so that the tails stay in registers.
#pragma GCC unroll 4
            for (int row = kRows - 1; row >= 0; --row) {
                const std::ptrdiff_t i = at - row * kLag;
                if (!kInside && (i < 0 || i > columns)) continue;
                ColorVector left = ColorVector::Zero(); // by the spare pixel behind the last
                if (kInside || i < columns) {
                    const ColorVector above = row > 0 ? tails[row - 1].lastButOne
                                                      : ColorVector::Load(carried + i * kStep * 4);
                    const ColorVector ahead =
                        row > 0 ? tails[row - 1].last
                                : ColorVector::Load(carried + (i + 1) * kStep * 4);
                    const std::ptrdiff_t offset = row * columns + i * kStep;
                    left = Map<kBytes>(from + offset * kBytes, to + offset,
                                       Gather(tails[row].last, above, ahead));
                    if (row == kRows - 1) left.Store(carried + i * kStep * 4);
                }
                tails[row].Push(left);
            }
        };
        constexpr std::ptrdiff_t kBehind = kLag * (kRows - 1);
        std::ptrdiff_t at = 0;
        for (; at < kBehind; ++at) advance(std::false_type(), at);
        for (; at < columns; ++at) advance(std::true_type(), at);
        for (; at < columns + kBehind; ++at) advance(std::false_type(), at);
    }

    const Pixels& pixels;
    std::uint8_t* const indices;
    NearestEntry nearest;
    const PaletteColors inPalette;
    const std::uint8_t hidden;
    const ColorVector strength, mostError, leastError;
    alignas(8) std::int16_t levels[kMostEntries][4] = {};
    std::vector<std::int16_t> errors; ///< that the row above left, 4 values a pixel
};

/// To the nearest entry of another colour, in the channel in which they differ most; 0 without one.
int DistanceToOthers(const Target& target, std::size_t entry) {
    const Color& own = target.palette[entry];
    int least = 0;
    for (std::size_t n = 0; n < target.palette.size(); ++n) {
        const Color& other = target.palette[n];
        if (other == own || static_cast<int>(n) == target.hidden) continue;
        const int distance =
            std::max({std::abs(own.red - other.red), std::abs(own.green - other.green),
                      std::abs(own.blue - other.blue)});
        if (least == 0 || distance < least) least = distance;
    }
    return least;
}

} // namespace

DiffusionSettings SettingsFor(const Target& target) {
    int visible = 0, spacing = 0;
    for (std::size_t n = 0; n < target.palette.size(); ++n) {
        if (static_cast<int>(n) == target.hidden) continue;
        ++visible;
        spacing += DistanceToOthers(target, n);
    }
    constexpr int kLeastError = 48;
    return {32000 - 32 * static_cast<int>(target.palette.size()),
            std::clamp(spacing / std::max(visible, 1), kLeastError, 255)};
}

void DiffusePixels(const Pixels& pixels, const Target& target, int amount, std::uint8_t* indices) {
    Diffusion diffusion(pixels, target, SettingsFor(target), amount, indices);
    if (pixels.bytesPerPixel == 3)
        diffusion.Run<3>();
    else
        diffusion.Run<4>();
}

} // namespace gif89
