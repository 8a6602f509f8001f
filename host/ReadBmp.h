// Reads BMP pictures.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads a whole BMP file, whose "BM" comes next, packed or not, of any of the versions since OS/2.
///
/// Pictures of 1, 4 and 8 bits a pixel keep their indices and table; those of 16, 24 and 32 bits
/// become RGB, with opacity where the file has a mask for it and some pixel is not opaque. Samples
/// narrower or wider than 8 bits are rounded to the nearest of 256 levels. The embedded profile
/// of a version 5 file goes into the notes. Throws Problem for input that is cut short or damaged,
/// and when the library that decodes it cannot be loaded; bytes after the end are ignored.
/// Source: the bitmap structures of the Windows GDI.
Picture ReadBmp(InputFile& input);

} // namespace gif89
