// The indexed options dialog as its parts share it: item numbers, texts, and the way from a dialog
// to its state.
#pragma once

#include "GetParameters.h"
#include "HostDialogs.h"
#include "ModalDialog.h"

#include <cstdint>

/// Resource ids.
enum : std::int16_t {
    kIndexedDialog = 16001,
    kIndexedStrings = 16001,
    kSharedStrings = 16002,
    kWatchCursor = 4,
};

/// Items beside those of GetParameters.h.
enum : std::int16_t {
    kIndexedOKItem = 1,
    kIndexedCancelItem = 2,
    kIndexedTableItem = 5,
    kIndexedInterlaceItem = 6,
    kIndexedCommentItem = 7,
    kIndexedSwatchItem = 12,
    kIndexedHintItem = 13,
    kIndexedToolFrameItem = 14,
    kIndexedZoomFrameItem = 15,
    kIndexedChannelItem = 16,
    kIndexedCountItem = 17,
};

/// Indices of kIndexedStrings.
enum : std::int16_t {
    kHintString1 = 1,
    kHintString2 = 2,
    kChannelString = 3, ///< in front of the number of a channel without a name
    kCancelString = 5,
    kResetString = 6, ///< what Cancel means while option is held
    kCountString = 7,
};
/// Index of kSharedStrings.
constexpr std::int16_t kColorPromptString = 4;

/// The entry of the channel pop-up that means no channel; entry k + 1 means channel k.
constexpr std::int16_t kNoChannelEntry = 1;

/// What the transparent entries look like until someone chooses.
constexpr RGBtuple kUsualTransparentColor = {0, 192, 192, 192};

/// What the dialog's reference constant points at while the colour picker runs: host services that
/// keep the dialog alive meanwhile find here whom to call.
struct DialogDuringPicker {
    IndexedDialogGlobals* globals;
    ModalFilterProc filter;
    ModalEventProc* eventProc; ///< the host's; may be null
};

/// Makes the reference constant point at such a record, and puts it back.
class PickerRefCon {
  public:
    PickerRefCon(DialogPtr theDialog, const DialogDuringPicker& theRecord);
    PickerRefCon(const PickerRefCon&) = delete;
    PickerRefCon& operator=(const PickerRefCon&) = delete;
    ~PickerRefCon();

  private:
    DialogPtr dialog;
    std::intptr_t savedRefCon;
    DialogDuringPicker record;
    const DialogDuringPicker* outer;
};

/// The state of an indexed dialog, also while the colour picker runs over it.
IndexedDialogGlobals* GlobalsOf(DialogPtr dialog);
