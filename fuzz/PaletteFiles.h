// Palette files that a fuzzer's user can pick.
#pragma once

#include <string>

constexpr int kPaletteFiles = 4; ///< one of each format, and one that is damaged

/// The path of one, 0..kPaletteFiles - 1.
std::string PaletteFilePath(int number);
