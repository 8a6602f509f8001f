// Reads BMP pictures.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads a whole BMP file, whose "BM" comes next, plain or in runs, of any of the versions since
/// OS/2.
///
/// Pictures of 1, 2, 4 and 8 bits a pixel keep their indices and table; pixels that the runs leave
/// out have index 0. Those of 16, 24 and 32 bits become RGB, with opacity where the file has a mask
/// for it and some pixel is not opaque; samples narrower or wider than 8 bits are rounded to the
/// nearest of 256 levels. The embedded profile of a version 5 file goes into the notes; one in a
/// file of its own is unusable. Throws Problem for input that is cut short or damaged; that only
/// the end of the runs is missing is a warning in the notes. Bytes after the end are ignored.
///
/// This is code of our own because the libraries at hand lose the indices of some pictures, do not
/// reach full white for narrow samples, or turn missing pixels into black ones.
/// Source: the bitmap structures of the Windows GDI.
Picture ReadBmp(InputFile& input);

} // namespace gif89
