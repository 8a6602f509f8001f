// Reads PNG pictures.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads a whole PNG file, whose signature comes next; every colour type, depth and interlacing.
///
/// A palette picture becomes indexed, table and indices as they stand. Grey becomes indexed with a
/// ramp of all greys of its depth, 256 for 16 bits; grey with alpha and RGB become RGB. Samples of
/// 16 bits are rounded to 8. Transparency ("tRNS") becomes the channel
/// of an indexed picture or the opacity of an RGB one, and is left out when every pixel is opaque.
/// What the colours are ("cICP", else "iCCP", "sRGB", "gAMA" and "cHRM") and the orientation
/// ("eXIf") are left to the caller, in the notes. Of an animation it is the picture that every
/// program shows; the frames are counted. The comment is the text "Comment", else "Description".
/// Throws Problem for input that is damaged up to the end of the pixels, lesser parts included, and
/// for more texts and profiles than MetadataAllowance grants; damage behind the pixels is a warning
/// in the notes, and nothing after the end is read. Source: Portable Network Graphics (third
/// edition).
Picture ReadPng(InputFile& input);

} // namespace gif89
