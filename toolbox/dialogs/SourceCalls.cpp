#include "SourceCalls.h"

#include "ControlManager.h"
#include "EventQueue.h"
#include "EventSource.h"
#include "PascalStrings.h"

void PostItemHit(DialogPtr dialog, short item) {
    // The modal loop looks whether the item is enabled, when the hit's turn comes.
    if (dialog->Item(item)) AppendToQueue({{}, dialog, item, false});
}

bool ChoosePopUpEntry(DialogPtr dialog, short item, short entry) {
    const DialogItem* const popUp = dialog->Item(item);
    if (!popUp || !popUp->menu || popUp->IsDisabled()) return false;
    if (!(*popUp->menu)->CanChoose(entry)) return false;
    // A menu may have grown since its control was made.
    if (GetControlMaximum(popUp->control) < entry) SetControlMaximum(popUp->control, entry);
    SetControlValue(popUp->control, entry);
    PostItemHit(dialog, item);
    return true;
}

void EditTextChanged(DialogPtr dialog, short item, const std::string& text) {
    DialogItem* const edited = dialog->Item(item);
    if (!edited || edited->BaseKind() != kEditTextItem || edited->IsDisabled()) return;
    dialog->editItem = item;
    edited->text = CutText(text);
    // Said even where the widget has this text already: the dialog may be shown by another source
    // than the one that changes it.
    TellSource(dialog, item, ItemChange::text);
    PostItemHit(dialog, item);
}
