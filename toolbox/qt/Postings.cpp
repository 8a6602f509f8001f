#include "Postings.h"

bool IsItemEnabled(const DialogItem& item) {
    const bool inactive = item.control && (*item.control)->contrlHilite == kControlInactive;
    return !item.IsDisabled() && !inactive;
}

void Postings::Event(const EventRecord& event) {
    ++count;
    PostEvent(event);
}

bool Postings::Offer(DialogPtr dialog, const EventRecord& event) {
    const bool taken = OfferEvent(dialog, event);
    if (taken) ++count; // the filter may have named a hit
    return taken;
}

void Postings::Hit(DialogPtr dialog, short item) {
    const DialogItem* record = dialog->Item(item);
    if (!record || !IsItemEnabled(*record)) return;
    ++count;
    PostItemHit(dialog, item);
}

bool Postings::Entry(DialogPtr dialog, short item, short entry) {
    ++count;
    return ChoosePopUpEntry(dialog, item, entry);
}

void Postings::Text(DialogPtr dialog, short item, const std::string& text) {
    ++count;
    EditTextChanged(dialog, item, text);
}
