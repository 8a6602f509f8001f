// A second opinion on GIF files.
#pragma once

#include "DecodeGif.h"
#include "GiflibDecode.h"

#include <cstdint>
#include <span>

/// Requires that giflib reads from a file that DecodeGif has accepted what that has found, and
/// returns it.
GiflibPicture RequireAgreement(const gif89::DecodedGif& gif, std::span<const std::uint8_t> file);
