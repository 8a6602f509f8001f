#include "Reduction.h"

namespace gif89 {

Palette WebPalette() {
    Palette palette;
    for (int red = 0; red < 6; ++red)
        for (int green = 0; green < 6; ++green)
            for (int blue = 0; blue < 6; ++blue)
                palette.push_back({static_cast<std::uint8_t>(red * 51),
                                   static_cast<std::uint8_t>(green * 51),
                                   static_cast<std::uint8_t>(blue * 51)});
    return palette;
}

Palette GreyPalette(int entries) {
    Palette palette;
    for (int n = 0; n < entries; ++n) {
        const auto level = static_cast<std::uint8_t>((n * 255 + (entries - 1) / 2) / (entries - 1));
        palette.push_back({level, level, level});
    }
    return palette;
}

} // namespace gif89
