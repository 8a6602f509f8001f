// The entries of a given palette that suit a picture best. Internal to this folder.
#pragma once

#include "ColorCount.h"

namespace gif89 {

/// Leaves out entries of the palette, each time the one whose loss adds the least squared error,
/// until there are `wanted`, 1 or more. The others keep their order.
Palette KeepSuitingEntries(const ColorCount& count, const Palette& palette, std::size_t wanted);

} // namespace gif89
