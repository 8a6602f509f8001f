// The words for the palettes that the module's pop-up always offers.
#pragma once

namespace gif89 {

/// In the order of its entries, from kExactEntry on.
constexpr const char* kPaletteNames[] = {"exact", "adaptive", "fixed"};

} // namespace gif89
