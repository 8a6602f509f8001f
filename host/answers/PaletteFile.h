// What we look at in a palette file before the module gets it.
#pragma once

#include <string>

namespace gif89 {

/// True for a swatch or RIFF palette file that says it holds no colours. The module takes such a
/// file for 256 black entries. Whatever else is wrong with a file, the module finds itself.
bool HoldsNoColors(const std::string& path);

} // namespace gif89
