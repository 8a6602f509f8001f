#include "Thresholds.h"

#include <algorithm>
#include <array>

namespace gif89 {
namespace {

constexpr int kBlueSide = 64;
constexpr std::size_t kBluePlaces = std::size_t{kBlueSide} * kBlueSide;
constexpr std::size_t kFirstPlaces = kBluePlaces / 10;

/// How crowded each place of a square is by the marked ones around it; the square meets itself at
/// its edges.
class Crowding {
  public:
    bool IsMarked(std::size_t place) const { return marked[place]; }

    void Set(std::size_t place, bool mark) {
        marked[place] = mark;
        const int row = static_cast<int>(place) / kBlueSide,
                  column = static_cast<int>(place) % kBlueSide;
        for (int y = -kReach; y <= kReach; ++y)
            for (int x = -kReach; x <= kReach; ++x) {
                const int weight = kWeights[static_cast<std::size_t>(y < 0 ? -y : y)] *
                                   kWeights[static_cast<std::size_t>(x < 0 ? -x : x)];
                const int near =
                    ((row + y) & (kBlueSide - 1)) * kBlueSide + ((column + x) & (kBlueSide - 1));
                crowd[static_cast<std::size_t>(near)] += mark ? weight : -weight;
            }
    }

    /// The most crowded marked place; the first of several.
    std::size_t TightestCluster() const {
        std::size_t best = kBluePlaces;
        for (std::size_t place = 0; place < kBluePlaces; ++place)
            if (marked[place] && (best == kBluePlaces || crowd[place] > crowd[best])) best = place;
        return best;
    }
    /// The least crowded place without a mark; the first of several.
    std::size_t LargestVoid() const {
        std::size_t best = kBluePlaces;
        for (std::size_t place = 0; place < kBluePlaces; ++place)
            if (!marked[place] && (best == kBluePlaces || crowd[place] < crowd[best])) best = place;
        return best;
    }

  private:
    // A bell curve of sigma 1.9 in 1/1024.
    static constexpr int kReach = 7;
    static constexpr std::array<int, kReach + 1> kWeights = {1024, 892, 588, 294, 112, 32, 7, 1};

    std::array<bool, kBluePlaces> marked = {};
    std::array<std::int32_t, kBluePlaces> crowd = {};
};

/// A tenth of the places, spread evenly.
Crowding SpreadFirstPlaces() {
    Crowding crowding;
    std::uint32_t random = 1;
    for (std::size_t count = 0; count < kFirstPlaces;) {
        random = random * 1664525U + 1013904223U;
        const std::size_t place = random >> 20;
        if (crowding.IsMarked(place)) continue;
        crowding.Set(place, true);
        ++count;
    }
    for (;;) {
        const std::size_t cluster = crowding.TightestCluster();
        crowding.Set(cluster, false);
        const std::size_t hole = crowding.LargestVoid();
        crowding.Set(hole, true);
        if (hole == cluster) return crowding;
    }
}

} // namespace

Thresholds Thresholds::Ordered() {
    Thresholds made(8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int rank = 0;
            for (int bit = 0; bit < 3; ++bit)
                rank = rank << 2 | ((x ^ y) >> bit & 1) << 1 | (y >> bit & 1);
            made.values[static_cast<std::size_t>(y * 8 + x)] =
                static_cast<std::uint16_t>((2 * rank + 1) * kLevels / 128);
        }
    return made;
}

Thresholds Thresholds::BlueNoise() {
    static_assert(kBluePlaces == kLevels, "every place has a threshold of its own");
    Thresholds made(kBlueSide);
    const Crowding first = SpreadFirstPlaces();
    Crowding crowding = first;
    for (std::size_t rank = kFirstPlaces; rank-- > 0;) {
        const std::size_t place = crowding.TightestCluster();
        crowding.Set(place, false);
        made.values[place] = static_cast<std::uint16_t>(rank);
    }
    crowding = first;
    for (std::size_t rank = kFirstPlaces; rank < kBluePlaces; ++rank) {
        const std::size_t place = crowding.LargestVoid();
        crowding.Set(place, true);
        made.values[place] = static_cast<std::uint16_t>(rank);
    }
    return made;
}

} // namespace gif89
