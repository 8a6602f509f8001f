// Colours by hue.
#pragma once

#include "ToolboxTypes.h"

#pragma GCC visibility push(default)

/// Hue, saturation and value in this order, each 0..65535.
struct HSVColor {
    std::uint16_t hue = 0;
    std::uint16_t saturation = 0;
    std::uint16_t value = 0;
};

/// Converts in integers with truncating divisions, so that every machine gets the same numbers.
void RGB2HSV(const RGBColor* rgb, HSVColor* hsv);

#pragma GCC visibility pop
