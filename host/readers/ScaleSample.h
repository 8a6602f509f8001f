// Samples of any depth as levels of eight bits.
#pragma once

#include <cstdint>

namespace gif89 {

/// A sample's share of `maximum`, which is at least 1, in steps of 1 / top, rounded.
template <class Number>
constexpr std::uint8_t ScaleSample(Number sample, Number maximum, Number top = 255) {
    return static_cast<std::uint8_t>((sample * top + maximum / 2) / maximum);
}

} // namespace gif89
