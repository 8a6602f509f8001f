#include "Reduce.h"

#include "BestPalette.h"
#include "ColorCount.h"
#include "SuitingEntries.h"

#include <algorithm>

namespace gif89 {
namespace {

/// Diffusion mixes what lies between entries; a little farther apart they reach more colours.
constexpr int kOutwardPercent = 1;

Color ColorOf(const ColorPoint& point) {
    const auto level = [&](int channel) {
        return static_cast<std::uint8_t>(point.channels[channel] / kStepsPerLevel);
    };
    return {level(0), level(1), level(2)};
}

/// Puts the kept colours first and takes them out of the points where these are single colours.
Palette StartPalette(ColorCount& count, const Palette& kept) {
    Palette palette;
    for (const Color& color : kept)
        if (std::find(palette.begin(), palette.end(), color) == palette.end())
            palette.push_back(color);
    if (count.exact && !palette.empty())
        std::erase_if(count.points, [&](const ColorPoint& point) {
            return std::find(palette.begin(), palette.end(), ColorOf(point)) != palette.end();
        });
    return palette;
}

Palette MakePalette(ColorCount& count, const Reduction& how, int room) {
    const auto most = static_cast<std::size_t>(room);
    if (how.given) {
        if (how.given->size() <= most) return *how.given;
        return KeepSuitingEntries(count, *how.given, most);
    }
    Palette palette = StartPalette(count, how.kept);
    if (!count.exact || palette.size() + count.points.size() > most) {
        const bool mixes = how.dithering == Dithering::diffusion && !count.exact;
        return MakeBestPalette(count, room, palette,
                               mixes ? kOutwardPercent * how.amount / 100 : 0);
    }
    for (const ColorPoint& point : count.points) palette.push_back(ColorOf(point));
    return palette;
}

bool HasAll(const Palette& palette, const ColorCount& count) {
    return count.exact &&
           std::all_of(count.points.begin(), count.points.end(), [&](const ColorPoint& point) {
               return std::find(palette.begin(), palette.end(), ColorOf(point)) != palette.end();
           });
}

} // namespace

Reduced Reduce(const Pixels& pixels, const Reduction& how) {
    ColorCount count = CountColorPoints(pixels);
    Reduced reduced;
    reduced.palette = MakePalette(count, how, how.entries - (count.transparent ? 1 : 0));
    reduced.exact = HasAll(reduced.palette, count);
    if (count.transparent) {
        reduced.transparent = static_cast<int>(reduced.palette.size());
        reduced.palette.push_back({});
    }
    count.points = {}; // frees them before the search for entries takes memory
    reduced.indices = std::make_unique_for_overwrite<std::uint8_t[]>(pixels.Count());
    MapPixels(pixels, {reduced.palette, reduced.transparent}, how.dithering, how.amount,
              reduced.indices.get());
    return reduced;
}

} // namespace gif89
