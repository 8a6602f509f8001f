// Reads a picture of any format that we know.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads a PNG, JPEG, PGM, PPM or PAM picture, told apart by the first bytes alone. Throws Problem
/// for an empty input, any other content and whatever the format's own reader refuses.
Picture ReadPicture(InputFile& input);

} // namespace gif89
