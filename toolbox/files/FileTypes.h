// The types of the files that are read and written here.
#pragma once

#include "ToolboxTypes.h"

enum : OSType {
    kSwatchFileType = FourCC("Q7CO"),      ///< ".zco"
    kTableFileType = FourCC("Q7CT"),       ///< ".zct"
    kRiffPaletteFileType = FourCC("PAL "), ///< ".pal"
    kGIFFileType = FourCC("GIFf"),         ///< ".gif"
};
