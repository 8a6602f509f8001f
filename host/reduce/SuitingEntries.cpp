#include "SuitingEntries.h"

#include <limits>

namespace gif89 {
namespace {

/// The two entries nearest to a point, and by how much the second is farther, times the weight.
struct Choice {
    std::size_t first = 0, second = 0;
    std::int64_t loss = 0;
};

class Selection {
  public:
    Selection(const std::vector<ColorPoint>& thePoints, const Palette& thePalette)
        : points(thePoints), palette(thePalette), kept(palette.size(), true),
          losses(palette.size()), choices(points.size()) {
        for (std::size_t n = 0; n < points.size(); ++n) Choose(n);
    }

    void LeaveOutOne() {
        // Of entries equally useless the last goes.
        std::size_t least = palette.size();
        for (std::size_t k = 0; k < palette.size(); ++k)
            if (kept[k] && (least == palette.size() || losses[k] <= losses[least])) least = k;
        kept[least] = false;
        for (std::size_t n = 0; n < points.size(); ++n) {
            if (choices[n].first != least && choices[n].second != least) continue;
            losses[choices[n].first] -= choices[n].loss;
            Choose(n);
        }
    }

    Palette Kept() const {
        Palette left;
        for (std::size_t k = 0; k < palette.size(); ++k)
            if (kept[k]) left.push_back(palette[k]);
        return left;
    }

  private:
    std::int64_t DistanceTo(const ColorPoint& point, const Color& color) const {
        const std::int64_t red = point.channels[0] - color.red * kStepsPerLevel,
                           green = point.channels[1] - color.green * kStepsPerLevel,
                           blue = point.channels[2] - color.blue * kStepsPerLevel;
        return red * red + green * green + blue * blue;
    }

    void Choose(std::size_t n) {
        constexpr std::int64_t kFar = std::numeric_limits<std::int32_t>::max();
        std::int64_t first = kFar, second = kFar;
        Choice& choice = choices[n];
        for (std::size_t k = 0; k < palette.size(); ++k) {
            if (!kept[k]) continue;
            const std::int64_t distance = DistanceTo(points[n], palette[k]);
            if (distance < first) {
                second = first;
                choice.second = choice.first;
                first = distance;
                choice.first = k;
            } else if (distance < second) {
                second = distance;
                choice.second = k;
            }
        }
        choice.loss = (second - first) * points[n].weight;
        losses[choice.first] += choice.loss;
    }

    const std::vector<ColorPoint>& points;
    const Palette& palette;
    std::vector<bool> kept;
    std::vector<std::int64_t> losses; ///< by entry: the error that leaving it out adds
    std::vector<Choice> choices;      ///< by point
};

} // namespace

Palette KeepSuitingEntries(const ColorCount& count, const Palette& palette, std::size_t wanted) {
    Selection selection(count.points, palette);
    for (std::size_t left = palette.size(); left > wanted; --left) selection.LeaveOutOne();
    return selection.Kept();
}

} // namespace gif89
