// Reduction to a palette pixel after pixel, in plain integer code.
#pragma once

#include "Diffusion.h"

#include <vector>

/// The nearest entry by squared distance, the lowest of several; never the hidden one.
int PlainNearest(const gif89::Target& target, int red, int green, int blue);

/// What DiffusePixels makes of the pixels.
std::vector<std::uint8_t> PlainDiffusePixels(const gif89::Pixels& pixels,
                                             const gif89::Target& target, int amount);
