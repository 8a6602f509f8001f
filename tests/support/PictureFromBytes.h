// Puts files of pictures together in memory and reads them through the same path as others.
#pragma once

#include "Picture.h"

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// Bytes by chance, each below `values`.
Bytes RandomBytes(std::size_t count, unsigned seed, unsigned values = 256);

/// A number in so many bytes, the lowest first.
Bytes LE(std::size_t value, int bytes);

Bytes Join(const std::vector<Bytes>& parts);

/// ReadPicture of a file with these bytes.
gif89::Picture PictureFromBytes(const Bytes& bytes);

/// The sentence with which ReadPicture refuses these bytes; empty when it does not.
std::string RefusalOf(const Bytes& bytes);

/// That sentence, or else the first warning about the file; empty when all is well.
std::string ComplaintAbout(const Bytes& bytes);

/// The pixels, ready for comparison.
Bytes PixelsOf(const gif89::Picture& picture);

/// Red, green, blue and opacity of each pixel of any kind of picture.
Bytes ColorsOf(gif89::Picture picture);

/// Checks that there is no complaint about the file, but one when it ends after any number of its
/// bytes but all. Then reads it with each of its bits flipped in turn, which finds crashes, leaks
/// and hangs; returns how many of these were complained about.
std::size_t CountNoticedDamage(const Bytes& file);
