// Finds a colour in a palette, if it is there. Internal to this folder.
#pragma once

#include "Target.h"

#include <array>

namespace gif89 {

class PaletteColors {
  public:
    explicit PaletteColors(const Target& target) {
        for (std::size_t n = target.palette.size(); n-- > 0;) {
            if (static_cast<int>(n) == target.hidden) continue;
            const Color& color = target.palette[n];
            Insert(static_cast<std::uint32_t>(color.red | color.green << 8 | color.blue << 16), n);
        }
    }

    /// The lowest entry of a colour, red in its lowest byte; -1 when no entry has it.
    int Find(std::uint32_t color) const {
        std::size_t place = PlaceOf(color);
        for (; colors[place] != kFree; place = (place + 1) % kPlaces)
            if (colors[place] == color) return entries[place];
        return -1;
    }

  private:
    // Sixteen times as many as there can be entries: a colour that is not there mostly meets a free
    // place at once.
    static constexpr int kPlaceBits = 12;
    static constexpr std::size_t kPlaces = std::size_t{1} << kPlaceBits;
    static constexpr std::uint32_t kFree = ~0U; ///< no colour

    static std::size_t PlaceOf(std::uint32_t color) {
        return (color * 2654435761U) >> (32 - kPlaceBits);
    }
    void Insert(std::uint32_t color, std::size_t entry) {
        std::size_t place = PlaceOf(color);
        while (colors[place] != kFree && colors[place] != color) place = (place + 1) % kPlaces;
        colors[place] = color;
        entries[place] = static_cast<std::uint8_t>(entry);
    }

    std::array<std::uint32_t, kPlaces> colors = [] {
        std::array<std::uint32_t, kPlaces> free;
        free.fill(kFree);
        return free;
    }();
    std::array<std::uint8_t, kPlaces> entries = {};
};

} // namespace gif89
