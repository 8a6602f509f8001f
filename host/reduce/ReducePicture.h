// Pictures reduced to colour tables of their own.
#pragma once

#include "Picture.h"
#include "Reduction.h"

namespace gif89 {

/// The indexed picture that a picture in true colour is reduced to; pixels without opacity
/// are hidden by channel "Transparency". An indexed picture is taken through its table. Throws
/// Problem without memory.
Picture ReducePicture(const Picture& picture, const Reduction& how);

} // namespace gif89
