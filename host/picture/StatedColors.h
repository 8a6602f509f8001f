// Colours that a file describes by a few numbers instead of a profile.
#pragma once

#include "Picture.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace gif89 {

/// Which samples a description is for.
enum class SampleKind : bool { grey, color };

/// CIE 1931 x and y of white, red, green and blue, in this order.
using Chromaticities = std::array<double, 8>;

/// Puts what code points say into the notes: a profile for ApplyProfile where the colours are to be
/// converted; `same` where they are sRGB; `unusable`, and in profileName why, where sRGB has no
/// room for them (PQ and HLG) or the numbers are none that still pictures of RGB use.
///
/// @param points primaries, transfer, matrix and range, a byte each
///
/// Source: ITU-T H.273, as chunk "cICP" of PNG (third edition) has them.
void StateCodePoints(InputNotes& notes, std::span<const std::uint8_t> points, SampleKind samples);

/// Puts what a gamma and chromaticities say into the notes in the same way.
///
/// @param gamma  exponent that light was stored with, 1 / 2.2 in most files; sRGB's curve without.
///               1 / 2.2 with the chromaticities of sRGB or none is meant for sRGB itself.
/// @param points those of sRGB without
///
/// Source: chunks "gAMA" and "cHRM" of PNG (third edition).
void StateGamma(InputNotes& notes, std::optional<double> gamma,
                const std::optional<Chromaticities>& points, SampleKind samples);

} // namespace gif89
