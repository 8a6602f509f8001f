#include "HSVColor.h"

#include <algorithm>

void RGB2HSV(const RGBColor* rgb, HSVColor* hsv) {
    const std::int64_t red = rgb->red, green = rgb->green, blue = rgb->blue;
    const std::int64_t max = std::max({red, green, blue});
    const std::int64_t delta = max - std::min({red, green, blue});
    *hsv = HSVColor{0, 0, static_cast<std::uint16_t>(max)};
    if (delta == 0) return; // grey, black included: no hue and no saturation
    std::int64_t sector = red - green + 4 * delta;
    if (green == max) sector = blue - red + 2 * delta;
    if (red == max) sector = green - blue + (green < blue ? 6 * delta : 0);
    hsv->hue = static_cast<std::uint16_t>(sector * 65536 / (6 * delta));
    hsv->saturation = static_cast<std::uint16_t>(delta * 65535 / max);
}
