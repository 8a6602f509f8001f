#include "EventSource.h"

#include "EventQueue.h"

#include <utility>

namespace {

thread_local EventSource* theSource = nullptr;

} // namespace

EventSource* SetEventSource(EventSource* source) {
    // What the one before still had to say is not meant for the dialogs of the new one.
    if (source != theSource) EmptyQueue();
    return std::exchange(theSource, source);
}

EventSource* CurrentEventSource() {
    return theSource;
}

void TellSource(DialogPtr dialog, short item, ItemChange change) {
    if (theSource) theSource->ItemChanged(dialog, item, change);
}
