// Lays a partly opaque pixel over the transparent colour. Internal to the histogram and the
// diffusion, which must agree on the result to the bit.
#pragma once

#include "ColorTable.h"
#include "PixelVector.h"

/// below + (color - below) x alpha / 255, rounded to nearest, in unsigned 32-bit arithmetic.
/// Multiplying by 65793 and shifting right by 24 replaces the division by 255; the result is the
/// same for every product of two bytes.
constexpr std::uint8_t CompositeChannel(std::uint8_t color, std::uint8_t below,
                                        std::uint8_t alpha) {
    const bool raise = color > below;
    const auto distance = static_cast<std::uint32_t>(raise ? color - below : below - color);
    const std::uint32_t part = (alpha * distance * 65793 + 8388608) >> 24;
    return static_cast<std::uint8_t>(raise ? below + part : below - part);
}
static_assert(255ULL * 255 * 65793 + 8388608 <= 0xFFFFFFFFULL, "the product fits 32 bits");

/// The colour of a pixel of red, green, blue and alpha over `below`; alpha is at least 1.
constexpr RGBtuple CompositePixel(const std::uint8_t* pixel, RGBtuple below) {
    const std::uint8_t alpha = pixel[3];
    if (alpha == 255) return {0, pixel[0], pixel[1], pixel[2]};
    return {0, CompositeChannel(pixel[0], below.red, alpha),
            CompositeChannel(pixel[1], below.green, alpha),
            CompositeChannel(pixel[2], below.blue, alpha)};
}

/// The same for all channels at once, opaque pixels included. Every step fits in 16 bits: a product
/// of two bytes is divided by 255 and rounded by adding 128, then adding the sum's high byte to the
/// sum, and keeping the high byte of that.
inline PixelVector CompositePixel(PixelVector pixel, PixelVector below) {
    const PixelVector difference = pixel - below;
    const PixelVector sign = difference >> 15; // 0 or -1
    const PixelVector distance = (difference ^ sign) - sign;
    const PixelVector product = distance * pixel.SplatFourth() + PixelVector::Splat(128);
    const PixelVector part = (product + product.ShiftUnsigned(8)).ShiftUnsigned(8);
    return below + ((part ^ sign) - sign);
}
