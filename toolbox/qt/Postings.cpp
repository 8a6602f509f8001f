#include "Postings.h"

#include "EventQueue.h"
#include "ModalDialog.h"
#include "SourceCalls.h"

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
