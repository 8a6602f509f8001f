// Pictures made of a few bytes of a fuzzer's.
#pragma once

#include "FuzzInput.h"
#include "Picture.h"

/// A picture of any kind, with any number of channels and any comment that a reader could find.
///
/// @param mostColumns the largest width, 1..kLargestSide; the height is at most 60
gif89::Picture TakePicture(FuzzInput& input, int mostColumns);
