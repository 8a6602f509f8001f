// Reads PNG pictures.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads a whole PNG file, whose signature comes next; every colour type, depth and interlacing.
///
/// A palette picture becomes indexed, table and indices as they stand. Grey becomes indexed with a
/// ramp of all greys of its depth, 256 for 16 bits; grey with alpha and RGB become RGB. Samples of
/// 16 bits are rounded to 8; a gamma value is ignored. Transparency ("tRNS") becomes the channel
/// of an indexed picture or the opacity of an RGB one, and is left out when every pixel is opaque.
/// The profile ("iCCP", else "sRGB") and the orientation ("eXIf") are left to the caller, in the
/// notes. The comment is the text "Comment", else "Description". Throws Problem for input that is
/// damaged anywhere, text and other lesser parts included; nothing after the end is read.
/// Source: ISO/IEC 15948 (PNG).
Picture ReadPng(InputFile& input);

} // namespace gif89
