// How many colours a picture shows.
#pragma once

#include "Picture.h"

namespace gif89 {

/// The distinct colours of a picture's visible pixels, those of an opacity above 0. Counts unless
/// the picture knows already.
std::int64_t CountColors(const Picture& picture);

} // namespace gif89
