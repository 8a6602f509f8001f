// How a camera was held, as the EXIF block of a picture file tells it.
#pragma once

#include <cstdint>
#include <span>

namespace gif89 {

/// The orientation that an EXIF block states for its picture.
///
/// @param exif the block from its TIFF header ("II" or "MM") on, with or without the six bytes
///             "Exif", 0, 0 that JPEG files put before it
/// @return 1..8; 1 (upright) when the block is damaged, states none or another value. See
///         Orient.h for the meaning. Source: CIPA DC-008, tag 274.
int ExifOrientation(std::span<const std::uint8_t> exif);

} // namespace gif89
