// Palettes from files: colour swatches (ZCO), raw colour tables (ZCT) and RIFF palettes (PAL).
//
// Loaded tables hold 256 colours; those past the count are black. Readers want a file that is open
// for reading, with its mark at the start. They change table and count only when they answer 0.
#pragma once

#include "ColorTable.h"
#include "FileManager.h"
#include "FileTypes.h"

/// Codes of the readers beside the File Manager's; eofErr is a file that ends too early.
enum : OSErr {
    kNotAPaletteFile = -1,       ///< the signature or version is another one
    kColorSpaceNotSupported = -2 ///< a swatch that is not RGB
};

/// Reads exactly `count` bytes; eofErr when there are fewer.
OSErr DoRead(short refNum, std::int32_t count, void* buffer);
/// Reads two bytes, most significant first. `*word` changes only on success.
OSErr DoReadWord(short refNum, short* word);

/// A colour swatch file: version 1, a count, and RGB swatches of which at most 256 are taken.
OSErr LoadColorsAsTable(short refNum, RGBLookUpTable* table, std::int32_t* count);
/// A colour table file: 256 triples of red, green and blue. The count is always 256.
OSErr LoadTableFile(short refNum, RGBLookUpTable* table, std::int32_t* count);
/// A RIFF palette file, of whose colours at most 256 are taken.
OSErr LoadMicrosoftPalette(short refNum, RGBLookUpTable* table, std::int32_t* count);

/// True for a file of one of the types above or, whatever its type, when ZCO, ZCT or PAL begins
/// with what follows the name's last dot, in capitals. `name` is length-prefixed.
Boolean IsPaletteFile(const OSType* type, const unsigned char* name);

/// File filter of the open dialog: shows folders and palette files, and hides everything else as
/// well as invisible files.
Boolean LoadPaletteFileFilter(ParamBlockRec* file);

/// Asks for a palette file. 1 with both outputs filled, or 0 when the user cancelled.
Boolean GetColorTableFile(FSSpec* file, OSType* type);

/// Loads a palette file with the reader of `type`; a type that is none of the above counts as a
/// colour table file.
///
/// @return 0, a code above, or the File Manager's; a file that cannot be opened answers 0 too, with
///         nothing changed
OSErr LoadColorTable(RGBLookUpTable* table, std::int32_t* count, const FSSpec* file, OSType type);
