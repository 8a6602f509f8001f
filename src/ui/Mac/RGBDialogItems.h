// Items and menu entries of the options dialog for RGB pictures.
#pragma once

#include <cstdint>

enum RGBDialogItem : std::int16_t {
    kRGBOKItem = 1,
    kRGBCancelItem = 2, ///< puts everything back while the option key is down
    kRGBLoadItem = 3,
    kRGBColorBoxItem = 4,
    kRGBColorLabelItem = 5, ///< this and the other label are each followed by a blank one
    kRGBGroupItem = 7,
    kRGBPalettePopUpItem = 10,
    kRGBCountLabelItem = 11,
    kRGBCountItem = 13,
    kRGBCountPopUpItem = 14,
    kRGBInterlaceItem = 15,
    kRGBCommentItem = 16,
    kRGBPreviewItem = 17,
    kRGBResizeItem = 18,
};

/// Entries of the palette pop-up. All others name palette files.
enum PaletteEntry : std::int16_t {
    kExactEntry = 1,
    kAdaptiveEntry = 2,
    kFixedEntry = 3,
    kPaletteFileEntry = 5, ///< the file picked last; there once one has been
};
