// Reads the binary portable formats PGM (P5), PPM (P6) and PAM (P7).
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads the first picture of a PGM, PPM or PAM stream, whose "P5", "P6" or "P7" comes next.
///
/// Grey becomes indexed: up to 256 levels as they stand, under a table of as many greys; more
/// levels are rounded to 256. Everything else becomes RGB, 0..maxval rounded to 0..255, with
/// opacity when some pixel is not opaque. PAM: depths 1 to 4 of the types BLACKANDWHITE, GRAYSCALE
/// and RGB, each with or without _ALPHA, or no type. Remarks in the header are skipped.
/// Streams of several pictures are legal: the further ones are counted but not decoded, damage
/// among them is a warning in the notes, and what is none is left alone. Throws Problem for a
/// header that is not well formed, a sample above maxval and missing pixels. Source: Netpbm's
/// pgm(5), ppm(5) and pam(5).
Picture ReadPnm(InputFile& input);

} // namespace gif89
