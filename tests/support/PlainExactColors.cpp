// An ordered set, and a search from one end to the other.
#include "PlainExactColors.h"

#include <functional>
#include <set>

std::vector<PackedColor> PlainExactColors(std::span<const std::uint8_t> rgb) {
    std::set<PackedColor, std::greater<>> colors = {0x000000, 0xFFFFFF};
    for (std::size_t i = 0; i < rgb.size() && colors.size() <= 256; i += 3)
        colors.insert(PackRGB(rgb[i], rgb[i + 1], rgb[i + 2]));
    return {colors.begin(), colors.end()};
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
