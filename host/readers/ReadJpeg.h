// Reads JPEG pictures.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads a whole JPEG file, whose first marker comes next.
///
/// Grey becomes indexed with a ramp of 256 greys, everything else RGB; ink colours (CMYK, YCCK)
/// go through an InkConverter, which applies their profile. The profile of other pictures and the
/// EXIF orientation are left to the caller, in the notes. The slow integer transform and
/// smooth upsampling are asked for by name, so that a picture always gives the same pixels. The
/// comment is that of the first comment marker with a text. Throws Problem for input that is cut
/// short or whose pixels are damaged, and for pictures in several scans that take more than 2 GiB
/// to put together; a missing end is a warning in the notes. Bytes after the end are ignored.
/// Source: ITU-T T.81.
Picture ReadJpeg(InputFile& input);

} // namespace gif89
