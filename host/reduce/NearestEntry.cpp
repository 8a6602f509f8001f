#include "NearestEntry.h"

#include <array>
#include <limits>

namespace gif89 {
namespace {

constexpr std::size_t kCells = 32 * 32 * 32;
constexpr std::size_t kBlocks = 8 * 8 * 8;

using Candidates = std::vector<std::uint8_t>;

/// A part of the colour cube; the ends lie inside.
struct ColorBox {
    std::array<int, 3> least, most;

    /// One of the boxes into which the cube is cut by the channels' upper bits, numbered with red
    /// in the upper bits.
    static ColorBox Make(std::uint32_t number, int bits) {
        ColorBox box;
        const int side = 256 >> bits;
        for (std::size_t c = 0; c < 3; ++c) {
            const int shift = bits * (2 - static_cast<int>(c));
            box.least[c] = static_cast<int>(number >> shift & ((1U << bits) - 1)) * side;
            box.most[c] = box.least[c] + side - 1;
        }
        return box;
    }
};

std::array<int, 3> Channels(const Color& color) {
    return {color.red, color.green, color.blue};
}

/// Squared distances of a colour to the nearest and to the farthest point of a box.
struct BoxDistances {
    int nearest = 0, farthest = 0;
};

BoxDistances DistancesOf(const Color& color, const ColorBox& box) {
    BoxDistances distances;
    const auto channels = Channels(color);
    for (std::size_t c = 0; c < 3; ++c) {
        const int below = box.least[c] - channels[c], above = channels[c] - box.most[c];
        const int outside = std::max({below, above, 0});
        const int across = std::max(box.most[c] - channels[c], channels[c] - box.least[c]);
        distances.nearest += outside * outside;
        distances.farthest += across * across;
    }
    return distances;
}

/// Those of the candidates that no other one beats everywhere in the box by distance alone.
Candidates NearBox(const Palette& palette, const Candidates& all, const ColorBox& box) {
    std::array<int, kMostEntries> nearest;
    int bound = std::numeric_limits<int>::max();
    for (std::size_t n = 0; n < all.size(); ++n) {
        const BoxDistances distances = DistancesOf(palette[all[n]], box);
        nearest[n] = distances.nearest;
        bound = std::min(bound, distances.farthest);
    }
    Candidates near;
    for (std::size_t n = 0; n < all.size(); ++n)
        if (nearest[n] <= bound) near.push_back(all[n]);
    return near;
}

/// True when no colour of the box takes `entry` while it can have `other`: the difference of both
/// squared distances is linear, so that one corner tells.
bool BeatsInBox(const Palette& palette, std::uint8_t other, std::uint8_t entry,
                const ColorBox& box) {
    const auto theirs = Channels(palette[other]), ours = Channels(palette[entry]);
    int most = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const int corner = ours[c] > theirs[c] ? box.most[c] : box.least[c];
        most +=
            (corner - theirs[c]) * (corner - theirs[c]) - (corner - ours[c]) * (corner - ours[c]);
    }
    return most < 0 || (most == 0 && other < entry);
}

Candidates Unbeaten(const Palette& palette, const Candidates& all, const ColorBox& box) {
    Candidates unbeaten;
    for (const std::uint8_t entry : all) {
        const bool beaten = std::any_of(all.begin(), all.end(), [&](std::uint8_t other) {
            return other != entry && BeatsInBox(palette, other, entry, box);
        });
        if (!beaten) unbeaten.push_back(entry);
    }
    return unbeaten;
}

/// Four of the candidates from `first`; behind the last one, that one again.
FourEntries GroupOf(const Palette& palette, const Candidates& all, std::size_t first) {
    FourEntries group = {};
    for (std::size_t n = 0; n < 4; ++n) {
        const std::uint8_t entry = all[std::min(first + n, all.size() - 1)];
        group.redGreen[2 * n] = palette[entry].red;
        group.redGreen[2 * n + 1] = palette[entry].green;
        group.blue[2 * n] = palette[entry].blue;
        group.key[n] = kKeyMark | entry;
    }
    return group;
}

} // namespace

NearestEntry::NearestEntry(const Target& target)
    : palette(target.palette), hidden(target.hidden), lists(std::make_unique<List[]>(kCells)),
      blocks(kBlocks) {}

const Candidates& NearestEntry::BlockCandidates(std::uint32_t cell) {
    const std::uint32_t block = (cell >> 6 & 0x1C0) | (cell >> 4 & 0x38) | (cell >> 2 & 7);
    Candidates& candidates = blocks[block];
    if (candidates.empty()) {
        Candidates all;
        for (std::size_t n = 0; n < palette.size(); ++n)
            if (static_cast<int>(n) != hidden) all.push_back(static_cast<std::uint8_t>(n));
        candidates = NearBox(palette, all, ColorBox::Make(block, 3));
    }
    return candidates;
}

void NearestEntry::MakeList(std::uint32_t cell) {
    const ColorBox box = ColorBox::Make(cell, 5);
    const Candidates near = Unbeaten(palette, NearBox(palette, BlockCandidates(cell), box), box);
    // Most cells get two groups then: where some had one and others two or three, the processor
    // guessed wrong when a search ends.
    const std::size_t count = (near.size() + 7) / 8 * 2;
    lists[cell] = {static_cast<std::uint32_t>(groups.size()) & 0xFFFFFF,
                   static_cast<std::uint32_t>(count) & 0xFF};
    for (std::size_t n = 0; n < count; ++n) groups.push_back(GroupOf(palette, near, 4 * n));
}

} // namespace gif89
