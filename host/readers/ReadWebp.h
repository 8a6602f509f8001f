// Reads WebP pictures.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads a whole WebP file, lossy or lossless, whose "RIFF" comes next.
///
/// The picture is RGB, with opacity when some pixel is not opaque. Of an animation it is the first
/// frame on its canvas, transparent where the frame leaves the canvas free; the frames are counted
/// in notes.pictures. Smooth upsampling is asked for by name and dithering kept out, so that a
/// picture always gives the same pixels. Throws Problem for input that is cut short or damaged up
/// to the end of the first frame; behind it that is a warning in the notes, and bytes after the end
/// are ignored. Source: RFC 9649.
Picture ReadWebp(InputFile& input);

} // namespace gif89
