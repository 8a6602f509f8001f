// Reads TIFF pictures.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads the first picture of a TIFF or BigTIFF file of either byte order, which begins with "II"
/// or "MM".
///
/// Unsigned samples of 1 to 16 bits, in strips or tiles, together or in planes:
///
/// - Palette pictures (up to 8 bits) keep their indices, and their table, rounded to 8 bits a
///   channel.
/// - Grey pictures of up to 8 bits keep their values as indices under a ramp of as many greys, from
///   white to black where zero is white; deeper ones are rounded to 256 greys.
/// - RGB becomes RGB. Inks (CMYK) become RGB by the file's profile or else by plain
///   multiplication.
/// - YCbCr becomes RGB of 8 bits as libtiff converts it.
///
/// The first extra sample that is declared as opacity becomes the opacity. Without such a sample
/// the fourth one of an RGB picture does, if the file does not state its meaning and it is not 0
/// everywhere. Colours that are stored multiplied by the opacity are divided by it, rounded. Other
/// extra samples become the channels "Alpha 1", "Alpha 2", ... of palette and grey pictures. In
/// other pictures they are dropped and counted in notes.droppedSamples.
///
/// The comment is the image description. Throws Problem for input that is cut short or damaged, and
/// for kinds of samples that are not among these; damage of the further directories is a warning in
/// the notes. Source: TIFF 6.0.
Picture ReadTiff(InputFile& input);

} // namespace gif89
