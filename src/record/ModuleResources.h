// The numbers of the module's resources: dialogs, their items, entries of menus and string lists,
// and cells of the colour table. The module uses them, and so does everything that operates its
// dialogs. The texts in resources/ must have the same numbers.
#pragma once

#include <cstdint>

/// Dialogs.
constexpr std::int16_t kRGBDialog = 16000, kIndexedDialog = 16001, kRGBPreviewDialog = 16002,
                       kAboutDialog = 16010;
/// An alert whose only text is the first of ParamText.
constexpr std::int16_t kErrorAlert = 2001;
/// The palette `PLUT` that the pop-up calls Fixed.
constexpr std::int16_t kFixedPalette = 3;
constexpr std::int16_t kWatchCursor = 4;

/// The first two items of every options dialog.
constexpr std::int16_t kOKItem = 1;
constexpr std::int16_t kCancelItem = 2; ///< puts everything back while the option key is down

// Items of the RGB dialog
constexpr std::int16_t kRGBLoadItem = 3;
constexpr std::int16_t kRGBColorBoxItem = 4;
constexpr std::int16_t kRGBColorLabelItem =
    5; ///< this and the other label are followed by a blank one
constexpr std::int16_t kRGBGroupItem = 7;
constexpr std::int16_t kRGBPalettePopUpItem = 10;
constexpr std::int16_t kRGBCountLabelItem = 11;
constexpr std::int16_t kRGBCountItem = 13;
constexpr std::int16_t kRGBCountPopUpItem = 14;
constexpr std::int16_t kRGBInterlaceItem = 15;
constexpr std::int16_t kRGBCommentItem = 16;
constexpr std::int16_t kRGBPreviewItem = 17;
constexpr std::int16_t kRGBResizeItem = 18;

// Entries of its palette pop-up; all others name palette files
constexpr std::int16_t kExactEntry = 1;
constexpr std::int16_t kAdaptiveEntry = 2;
constexpr std::int16_t kFixedEntry = 3;
constexpr std::int16_t kPaletteFileEntry = 5; ///< the file picked last; there once one has been

// Items of the indexed dialog
constexpr std::int16_t kIndexedPreviewItem = 3;
constexpr std::int16_t kIndexedZoomTextItem = 4;
constexpr std::int16_t kIndexedTableItem = 5;
constexpr std::int16_t kIndexedInterlaceItem = 6;
constexpr std::int16_t kIndexedCommentItem = 7;
constexpr std::int16_t kIndexedHandItem = 9;
constexpr std::int16_t kIndexedZoomItem = 10;
constexpr std::int16_t kIndexedDropperItem = 11;
constexpr std::int16_t kIndexedSwatchItem = 12;
constexpr std::int16_t kIndexedHintItem = 13;
constexpr std::int16_t kIndexedToolFrameItem = 14;
constexpr std::int16_t kIndexedZoomFrameItem = 15;
constexpr std::int16_t kIndexedChannelItem = 16;
constexpr std::int16_t kIndexedCountItem = 17;

/// The entry of its channel pop-up that means no channel; entry k + 1 means channel k.
constexpr std::int16_t kNoChannelEntry = 1;

/// Its colour table: cells of 9 x 9 pixels on a pitch of 11, 32 in a row, the first of which begins
/// one pixel inside the item.
constexpr int kCellSize = 9, kCellPitch = 11, kCellsInRow = 32;

// Items of the preview of an RGB export
constexpr std::int16_t kRGBPreviewDoneItem = 1;
constexpr std::int16_t kRGBPreviewImageItem = 2;
constexpr std::int16_t kRGBPreviewScaleItem = 3;
constexpr std::int16_t kRGBPreviewTableItem = 4;
constexpr std::int16_t kRGBPreviewHandItem = 6;
constexpr std::int16_t kRGBPreviewZoomItem = 7;
constexpr std::int16_t kRGBPreviewFrameItem = 8;

/// String list with the names of the usual numbers of colours.
constexpr std::int16_t kCountStrings = 16000;

/// String list of the options dialogs, and its entries.
constexpr std::int16_t kDialogStrings = 16001;
constexpr std::int16_t kHintString1 = 1;
constexpr std::int16_t kHintString2 = 2;
constexpr std::int16_t kChannelString = 3; ///< in front of the number of a channel without a name
constexpr std::int16_t kCancelString = 5;
constexpr std::int16_t kResetString = 6; ///< what Cancel means while option is held
constexpr std::int16_t kCountString = 7;

/// String list with the texts of file dialogs and alerts, and its entries.
constexpr std::int16_t kSharedStrings = 16002;
constexpr std::int16_t kSuffixString = 2; ///< of proposed file names
constexpr std::int16_t kSavePromptString = 3;
constexpr std::int16_t kColorPromptString = 4;
constexpr std::int16_t kCannotReadString = 5;
constexpr std::int16_t kColorSpaceString = 6;
