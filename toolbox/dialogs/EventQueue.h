// What waits to be served on this thread: events, and hits that native widgets report, in the
// order in which they came.
#pragma once

#include "DialogRecord.h"
#include "EventTypes.h"

#include <optional>

#pragma GCC visibility push(default)

/// An event, or with an item number a hit.
struct QueueEntry {
    EventRecord event;
    DialogPtr dialog = nullptr; ///< of a hit
    short item = 0;
    bool byFilter = false; ///< reported whether the item is enabled or not
};

/// Puts an event behind the waiting ones; for sources.
void PostEvent(const EventRecord& event);
void AppendToQueue(const QueueEntry& entry);
/// Takes the first event, or hit in `dialog`; hits in other dialogs go on waiting for theirs.
std::optional<QueueEntry> TakeFromQueue(DialogPtr dialog);
/// True while an event waits that ends the current press.
bool EndOfPressWaits();
/// Takes the first event of the mask's kinds without looking for new ones.
std::optional<EventRecord> TakeQueuedEvent(short mask);
/// Forgets the hits of a dialog that goes.
void ForgetHits(DialogPtr dialog);
void EmptyQueue();

#pragma GCC visibility pop
