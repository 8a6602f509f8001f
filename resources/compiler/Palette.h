// Palettes as rules: PLUT resources of 256 entries in three planes.
#pragma once

#include "Bytes.h"
#include "Scanner.h"

namespace gif89 {

/// Reads "{ rules }", which must come to 256 entries; `place` is the palette's statement. Rules:
///   cube L1 L2 ...                  every colour of these levels, red slowest, blue fastest
///   cube L1 L2 ... without R G B    the same without one colour
///   ramp red|green|blue|grey L ...  these levels in one channel or in all three
///   color R G B                     one entry
Bytes ReadPaletteRules(Scanner& scanner, const Place& place);

} // namespace gif89
