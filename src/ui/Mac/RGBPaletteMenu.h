// The palette pop-up of the options dialog for RGB pictures, and the palettes behind its entries.
#pragma once

#include "DialogManager.h"
#include "GIF89RGBExport.h"

/// Chooses an entry that is no palette file, as the dialog does when it opens.
void ShowPaletteEntry(DialogPtr dialog, GIF89RGBExport* context, short entry);

/// Asks for a palette file, loads it into the context's palette, and gives it an entry in the
/// pop-up. A failure is told to the user and leaves everything as it was.
void PickPaletteFile(DialogPtr dialog, GIF89RGBExport* context);

/// Serves a choice in the pop-up: the count follows the palette, and a palette file is loaded anew.
/// When that fails the user is told and the entry before is chosen again.
void ServePalettePopUp(DialogPtr dialog, GIF89RGBExport* context);

/// Puts the fixed palette into the context's. False, with the user told, when it is not there.
bool LoadFixedPalette(GIF89RGBExport* context);

/// The id of the folder that a file lies in. 0, or the File Manager's error.
OSErr ResolveDirID(const FSSpec* file, std::int32_t* folder);
/// Fills FSSpec, type and Finder flags for a name in a folder. 0, or the File Manager's error.
OSErr GetCatInfo(std::int16_t volume, std::int32_t folder, ConstStr255Param name, FSSpec* file,
                 OSType* type, std::uint16_t* flags);
