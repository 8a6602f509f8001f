#include "Reduction.h"

#include <algorithm>

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

Palette FixedPalette() {
    Palette palette = WebPalette();
    std::reverse(palette.begin() + 1, palette.end()); // black stays first
    for (const unsigned ramp : {0x110000U, 0x001100U, 0x000011U, 0x111111U})
        for (const unsigned step : {14U, 13U, 11U, 10U, 8U, 7U, 5U, 4U, 2U, 1U})
            palette.push_back(Color::Unpack(ramp * step));
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
