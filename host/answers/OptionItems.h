// The module's options dialogs as whoever operates them needs to know them: their ids, items and
// entries.
#pragma once

namespace gif89 {

constexpr short kRGBOptions = 16000, kIndexedOptions = 16001;

constexpr short kOKButton = 1; ///< of both

/// Items of the indexed dialog.
constexpr short kIndexedTable = 5, kIndexedInterlaceBox = 6, kIndexedCommentBox = 7,
                kIndexedMatteBox = 12, kIndexedChannelPopUp = 16;
/// Items of the RGB dialog.
constexpr short kRGBLoadButton = 3, kRGBMatteBox = 4, kRGBPalettePopUp = 10, kRGBCountText = 13,
                kRGBInterlaceBox = 15, kRGBCommentBox = 16, kRGBResizeBox = 18;

/// Entries of the palette pop-up; those behind name palette files.
constexpr short kExactPalette = 1, kAdaptivePalette = 2, kFixedPalette = 3;
constexpr const char* kPaletteNames[] = {"exact", "adaptive", "fixed"};
/// The entry of the channel pop-up that means none; entry k + 1 means channel k.
constexpr short kNoChannel = 1;

} // namespace gif89
