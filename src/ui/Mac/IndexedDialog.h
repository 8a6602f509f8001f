// The way from a dialog with a preview to its state.
#pragma once

#include "GetParameters.h"
#include "HostDialogs.h"
#include "ModalDialog.h"

#include <cstdint>

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

/// The preview that a dialog shows, which is the base of the dialog's state; also while the colour
/// picker runs over it.
PreviewView* ViewOf(DialogPtr dialog);
/// The state of an indexed dialog.
IndexedDialogGlobals* GlobalsOf(DialogPtr dialog);
