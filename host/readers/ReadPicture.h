// Reads a picture of any supported format.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Whether a picture that the file declares to be turned is turned upright.
enum class Orientation : bool { asStored, upright };

/// Whether the first bytes are those of a format that ReadPicture knows. Nothing is taken.
bool IsPicture(InputFile& input);

/// Reads a picture. The first bytes alone decide on its format. Its colours are converted to sRGB
/// with the profile in the file, and it is turned upright if wanted. Throws Problem for an empty
/// input, for an unknown format and for everything that the format's reader refuses.
Picture ReadPicture(InputFile& input, Orientation orientation = Orientation::upright);

} // namespace gif89
