// Reads GIF pictures as they are found: any version, table, frame and number of pictures.
#pragma once

#include "InputFile.h"
#include "Picture.h"

namespace gif89 {

/// Reads the first picture of a GIF file, whose "GIF87a" or "GIF89a" comes next.
///
/// It stays indexed, with its indices and its own or else the file's table as they are. The picture
/// has the sides of the logical screen, or more where its frame reaches beyond. Around the frame
/// lies the transparent index, or without one the background's when the file's table is used and
/// has it, or else index 0 with opacity 0. Channel "Transparency" is there when some pixel is
/// transparent. The comment is the first one with a text, wherever it stands.
///
/// The further pictures are counted in notes.pictures but not decoded. Throws Problem for input
/// that is cut short or damaged within the first picture; what is wrong behind it, a missing
/// trailer or a later picture, is a warning in the notes. Bytes after the end are ignored. Source:
/// Graphics Interchange Format, version 89a.
Picture ReadGif(InputFile& input);

} // namespace gif89
