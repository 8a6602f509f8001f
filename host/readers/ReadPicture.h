// Reads a picture of any format that we know.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Whether a picture that the file declares turned is turned upright.
enum class Orientation : bool { asStored, upright };

/// Reads a picture, its format told by the first bytes alone; brings its colours to sRGB with the
/// profile in the file, then turns it upright if asked. Throws Problem for an empty input, an
/// unknown content and whatever the format's own reader refuses.
Picture ReadPicture(InputFile& input, Orientation orientation = Orientation::upright);

} // namespace gif89
