// Reads pictures that a test holds in memory, through the same path as files.
#pragma once

#include "Picture.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// ReadPicture of a file with these bytes.
gif89::Picture PictureFromBytes(const Bytes& bytes);
gif89::Picture PictureFromText(std::string_view bytes);

/// The sentence with which ReadPicture refuses these bytes; empty when it does not.
std::string RefusalOf(const Bytes& bytes);
std::string RefusalOf(std::string_view bytes);

/// The pixels, ready for comparison.
Bytes PixelsOf(const gif89::Picture& picture);

/// Checks that the file is refused when it ends after any number of its bytes but all.
void ExpectEveryCutRefused(const Bytes& file);

/// Reads the file with each of its bits flipped in turn; returns how many were refused. Finds
/// crashes, leaks and hangs.
std::size_t CountRefusedBitFlips(const Bytes& file);
