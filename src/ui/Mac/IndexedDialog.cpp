#include "IndexedDialog.h"

#include <utility>

namespace {

// Tells records from the globals: both are reached through the same reference constant.
thread_local const DialogDuringPicker* runningPicker = nullptr;

} // namespace

PickerRefCon::PickerRefCon(DialogPtr theDialog, const DialogDuringPicker& theRecord)
    : dialog(theDialog), savedRefCon(GetWRefCon(theDialog)), record(theRecord),
      outer(std::exchange(runningPicker, &record)) {
    SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(&record));
}

PickerRefCon::~PickerRefCon() {
    SetWRefCon(dialog, savedRefCon);
    runningPicker = outer;
}

PreviewView* ViewOf(DialogPtr dialog) {
    const std::intptr_t refCon = GetMoveableWRefCon(dialog);
    if (runningPicker && refCon == reinterpret_cast<std::intptr_t>(runningPicker))
        return runningPicker->globals;
    return reinterpret_cast<PreviewView*>(refCon);
}

IndexedDialogGlobals* GlobalsOf(DialogPtr dialog) {
    return static_cast<IndexedDialogGlobals*>(ViewOf(dialog));
}
