// A sorted list, and a search from one end to the other.
#include "PlainExactColors.h"

#include <algorithm>
#include <functional>

std::vector<PackedColor> PlainExactColors(std::span<const std::uint8_t> rgb) {
    std::vector<PackedColor> colors = {0xFFFFFF, 0x000000};
    PackedColor last = colors.front();
    for (std::size_t i = 0; i < rgb.size() && colors.size() <= 256; i += 3) {
        const PackedColor color = PackRGB(rgb[i], rgb[i + 1], rgb[i + 2]);
        if (color == last) continue;
        last = color;
        const auto place = std::lower_bound(colors.begin(), colors.end(), color, std::greater<>());
        if (*place != color) colors.insert(place, color); // black is never below `color`
    }
    return colors;
}

std::vector<std::uint8_t> PlainExactIndices(const std::vector<PackedColor>& colors,
                                            std::span<const std::uint8_t> rgb) {
    std::vector<std::uint8_t> indices;
    for (std::size_t i = 0; i < rgb.size(); i += 3) {
        const PackedColor color = PackRGB(rgb[i], rgb[i + 1], rgb[i + 2]);
        std::size_t last = 0;
        for (std::size_t k = 0; k < colors.size(); ++k)
            if (colors[k] >= color) last = k;
        indices.push_back(static_cast<std::uint8_t>(last));
    }
    return indices;
}
