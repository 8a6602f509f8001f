#include "BestPalette.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <utility>

namespace gif89 {
namespace {

using Points = std::vector<ColorPoint>;
using Sums = std::array<std::int64_t, 3>;

/// A position in the colour cube, in steps of 1/16 level.
using Place = std::array<std::int32_t, 3>;

/// Points and what they add up to.
struct Mass {
    std::int64_t weight = 0;
    Sums sums = {};

    void Add(const ColorPoint& point) {
        weight += point.weight;
        for (std::size_t c = 0; c < 3; ++c)
            sums[c] += std::int64_t{point.weight} * point.channels[c];
    }
    Mass operator-(const Mass& other) const {
        return {weight - other.weight,
                {sums[0] - other.sums[0], sums[1] - other.sums[1], sums[2] - other.sums[2]}};
    }
    Mass& operator+=(const Mass& other) {
        weight += other.weight;
        for (std::size_t c = 0; c < 3; ++c) sums[c] += other.sums[c];
        return *this;
    }
    Place Mean() const {
        Place mean;
        for (std::size_t c = 0; c < 3; ++c)
            mean[c] = static_cast<std::int32_t>((sums[c] + weight / 2) / weight);
        return mean;
    }
};

/// By how much it lowers the squared error to give each of two masses its own mean; in 1/256 of a
/// squared step. Never 0 for means that differ.
std::int64_t GainOfCut(const Mass& first, const Mass& second) {
    std::int64_t apart = 0; // squared distance of the means; below 2^34
    for (std::size_t c = 0; c < 3; ++c) {
        const std::int64_t between =
            first.sums[c] * 16 / first.weight - second.sums[c] * 16 / second.weight;
        apart += between * between;
    }
    const std::int64_t both = first.weight + second.weight;
    return (first.weight * second.weight + both - 1) / both * apart; // below 2^28 * 2^34
}

/// The symmetric 3 x 3 matrix of second moments about a place.
using Moments = std::array<std::array<std::int64_t, 3>, 3>;

/// Shifts the matrix so that its largest element has at most `bits` bits.
void ShiftTo(Moments& moments, int bits) {
    std::int64_t largest = 0;
    for (const auto& row : moments)
        for (const std::int64_t value : row) largest = std::max(largest, std::abs(value));
    int shift = 0;
    while (largest >> shift >= std::int64_t{1} << bits) ++shift;
    for (auto& row : moments)
        for (std::int64_t& value : row) value >>= shift;
}

Moments Square(const Moments& m) {
    Moments squared = {};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k) squared[i][j] += m[i][k] * m[k][j];
    return squared;
}

constexpr int kAxisBits = 12;

/// The direction in which the moments are largest; its largest component has kAxisBits bits.
Place MainAxis(Moments moments) {
    constexpr int kSquarings = 5; // the 32nd power of the matrix
    for (int n = 0; n < kSquarings; ++n) {
        ShiftTo(moments, 28);
        moments = Square(moments);
    }
    ShiftTo(moments, kAxisBits);
    // Every column of so high a power points along the axis; the largest is the most exact.
    std::size_t column = 0;
    for (std::size_t c = 1; c < 3; ++c)
        if (moments[c][c] > moments[column][column]) column = c;
    Place axis;
    for (std::size_t c = 0; c < 3; ++c) axis[c] = static_cast<std::int32_t>(moments[c][column]);
    if (axis == Place{}) axis[column] = 1;
    return axis;
}

/// Some points, and the best way to cut them in two.
struct Box {
    std::size_t begin, end;
    Mass mass;
    std::int64_t gain = 0; ///< of squared error, by the cut; 0 when there is none
    std::size_t cut = 0;   ///< first point of the second half
    Mass firstHalf;
};

/// Cuts boxes and knows their points' order.
class Cutter {
  public:
    explicit Cutter(Points& thePoints)
        : points(thePoints), along(thePoints.size()), spare(thePoints.size()) {}

    /// A box with its best cut, according to which its points are then ordered.
    Box MakeBox(std::size_t begin, std::size_t end, const Mass& mass) {
        Box box = {begin, end, mass, 0, 0, {}};
        if (end - begin < 2) return box;
        const Place mean = mass.Mean();
        Project(box, mean);
        FindCut(box);
        return box;
    }

  private:
    static constexpr std::size_t kBins = 64;

    Moments MomentsAbout(const Box& box, const Place& mean) const {
        Moments moments = {};
        for (std::size_t n = box.begin; n < box.end; ++n) {
            std::int64_t away[3];
            for (std::size_t c = 0; c < 3; ++c) away[c] = points[n].channels[c] - mean[c];
            for (std::size_t i = 0; i < 3; ++i) {
                const std::int64_t weighted = away[i] * points[n].weight;
                for (std::size_t j = i; j < 3; ++j) moments[i][j] += weighted * away[j];
            }
        }
        moments[1][0] = moments[0][1];
        moments[2][0] = moments[0][2];
        moments[2][1] = moments[1][2];
        return moments;
    }

    void Project(const Box& box, const Place& mean) {
        const Place axis = MainAxis(MomentsAbout(box, mean));
        least = std::numeric_limits<std::int32_t>::max();
        most = std::numeric_limits<std::int32_t>::min();
        for (std::size_t n = box.begin; n < box.end; ++n) {
            const std::int16_t* const x = points[n].channels;
            along[n] = axis[0] * x[0] + axis[1] * x[1] + axis[2] * x[2];
            least = std::min(least, along[n]);
            most = std::max(most, along[n]);
        }
    }

    void FindCut(Box& box) {
        // Multiplies by the reciprocal, which all positions share.
        const std::int64_t scale =
            (static_cast<std::int64_t>(kBins) << 32) / (std::int64_t{most} - least + 1);
        const auto binOf = [&](std::int32_t position) {
            return static_cast<std::size_t>((std::int64_t{position} - least) * scale >> 32);
        };
        Mass bins[kBins];
        for (std::size_t n = box.begin; n < box.end; ++n) bins[binOf(along[n])].Add(points[n]);
        std::size_t cut = 0;
        Mass first;
        for (std::size_t bin = 0; bin + 1 < kBins; ++bin) {
            first += bins[bin];
            const Mass second = box.mass - first;
            if (bins[bin].weight == 0 || second.weight == 0) continue;
            const std::int64_t gain = GainOfCut(first, second);
            if (gain <= box.gain) continue;
            box.gain = gain;
            box.firstHalf = first;
            cut = bin + 1;
        }
        box.cut = Partition(box, [&](std::size_t n) { return binOf(along[n]) < cut; });
    }

    /// Puts the points for which `isFirst` holds before the others, both in their old order, so
    /// that the outcome is the same everywhere. The first of the others.
    template <typename IsFirst> std::size_t Partition(const Box& box, IsFirst isFirst) {
        std::size_t firsts = box.begin, others = 0;
        for (std::size_t n = box.begin; n < box.end; ++n)
            (isFirst(n) ? points[firsts++] : spare[others++]) = points[n];
        std::copy_n(spare.begin(), others, points.begin() + static_cast<std::ptrdiff_t>(firsts));
        return firsts;
    }

    Points& points;
    std::vector<std::int32_t> along; ///< the points' positions along the axis
    Points spare;
    std::int32_t least = 0, most = 0;
};

/// Cuts the points into at most that many boxes.
std::vector<Box> CutBoxes(Points& points, std::size_t wanted) {
    Mass all;
    for (const ColorPoint& point : points) all.Add(point);
    Cutter cutter(points);
    std::vector<Box> boxes = {cutter.MakeBox(0, points.size(), all)};
    while (boxes.size() < wanted) {
        const auto largest = std::max_element(
            boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.gain < b.gain; });
        if (largest->gain == 0) break;
        const Box box = *largest;
        *largest = cutter.MakeBox(box.begin, box.cut, box.firstHalf);
        boxes.push_back(cutter.MakeBox(box.cut, box.end, box.mass - box.firstHalf));
    }
    return boxes;
}

template <typename Channels> std::int32_t SquaredDistance(const Channels& a, const Place& b) {
    std::int32_t sum = 0;
    for (std::size_t c = 0; c < 3; ++c) sum += (a[c] - b[c]) * (a[c] - b[c]);
    return sum;
}

/// Moves places to the means of the points that are nearest to them.
class Mover {
  public:
    Mover(const Points& thePoints, std::vector<Place> thePlaces, std::size_t keptPlaces)
        : points(thePoints), places(std::move(thePlaces)), kept(keptPlaces),
          nearest(thePoints.size()) {}

    void StartFrom(const std::vector<Box>& boxes) {
        for (std::size_t n = 0; n < boxes.size(); ++n)
            std::fill(nearest.begin() + static_cast<std::ptrdiff_t>(boxes[n].begin),
                      nearest.begin() + static_cast<std::ptrdiff_t>(boxes[n].end),
                      static_cast<std::uint8_t>(n + kept));
    }

    void Round() {
        SortNeighbours();
        std::vector<Mass> masses(places.size());
        std::int64_t largestError = -1;
        std::size_t worst = 0;
        for (std::size_t n = 0; n < points.size(); ++n) {
            const std::int32_t distance = FindNearest(n);
            masses[nearest[n]].Add(points[n]);
            const std::int64_t error = std::int64_t{distance} * points[n].weight;
            if (error <= largestError) continue;
            largestError = error;
            worst = n;
        }
        // Of several places without points all but one stay without: that is rare, and the next
        // round gives them others.
        const auto& worstServed = points[worst].channels;
        for (std::size_t k = kept; k < places.size(); ++k)
            places[k] = masses[k].weight > 0
                            ? masses[k].Mean()
                            : Place{worstServed[0], worstServed[1], worstServed[2]};
    }

    const std::vector<Place>& Places() const { return places; }

  private:
    /// Squared distance << 32 | place: a number, since numbers are sorted fastest.
    using Neighbour = std::uint64_t;
    static std::int32_t DistanceTo(Neighbour neighbour) {
        return static_cast<std::int32_t>(neighbour >> 32);
    }
    static std::size_t PlaceOf(Neighbour neighbour) { return neighbour & 0xFFFFFFFF; }

    void SortNeighbours() {
        neighbours.resize(places.size() * places.size());
        for (std::size_t k = 0; k < places.size(); ++k) {
            Neighbour* const own = neighbours.data() + k * places.size();
            for (std::size_t other = 0; other < places.size(); ++other)
                own[other] =
                    static_cast<Neighbour>(SquaredDistance(places[k], places[other])) << 32 | other;
            std::sort(own, own + places.size());
        }
    }

    // A place twice as far from the old nearest one as the point is cannot be nearer to the point.
    std::int32_t FindNearest(std::size_t n) {
        const std::size_t old = nearest[n];
        const std::int32_t reach = SquaredDistance(points[n].channels, places[old]);
        std::int32_t best = reach;
        const Neighbour* other = neighbours.data() + old * places.size();
        const Neighbour* const end = other + places.size();
        for (; other < end && DistanceTo(*other) / 4 <= reach; ++other) {
            const std::int32_t distance =
                SquaredDistance(points[n].channels, places[PlaceOf(*other)]);
            if (distance >= best) continue;
            best = distance;
            nearest[n] = static_cast<std::uint8_t>(PlaceOf(*other));
        }
        return best;
    }

    const Points& points;
    std::vector<Place> places;
    std::size_t kept;
    std::vector<std::uint8_t> nearest;
    std::vector<Neighbour> neighbours;
};

Color RoundToColor(const Place& place) {
    const auto level = [](std::int32_t steps) {
        return static_cast<std::uint8_t>(
            std::clamp((steps + kStepsPerLevel / 2) / kStepsPerLevel, 0, 255));
    };
    return {level(place[0]), level(place[1]), level(place[2])};
}

Place PlaceOf(const Color& color) {
    return {color.red * kStepsPerLevel, color.green * kStepsPerLevel, color.blue * kStepsPerLevel};
}

Place MoveOutward(const Place& place, const Place& middle, int percent) {
    Place moved;
    for (std::size_t c = 0; c < 3; ++c)
        moved[c] = place[c] + (place[c] - middle[c]) * percent / 100;
    return moved;
}

constexpr int kRounds = 4;
constexpr std::size_t kManyPoints = 65536;

} // namespace

Palette MakeBestPalette(ColorCount& count, int colors, const Palette& kept, int outward) {
    const std::size_t free = static_cast<std::size_t>(colors) - kept.size();
    if (free == 0 || count.points.empty()) return kept;
    const std::vector<Box> boxes = CutBoxes(count.points, free);
    std::vector<Place> places;
    for (const Color& color : kept) places.push_back(PlaceOf(color));
    for (const Box& box : boxes) places.push_back(box.mass.Mean());
    Mover mover(count.points, places, kept.size());
    mover.StartFrom(boxes);
    const int rounds = count.points.size() > kManyPoints ? 1 : kRounds;
    for (int n = 0; n < rounds; ++n) mover.Round();

    Mass all;
    for (const Box& box : boxes) all += box.mass;
    const Place middle = all.Mean();
    Palette palette = kept;
    for (std::size_t n = kept.size(); n < places.size(); ++n)
        palette.push_back(RoundToColor(MoveOutward(mover.Places()[n], middle, outward)));
    return palette;
}

} // namespace gif89
