#include "EventQueue.h"

#include <algorithm>
#include <deque>

namespace {

thread_local std::deque<QueueEntry> theQueue;

constexpr bool IsHit(const QueueEntry& entry) {
    return entry.item != 0;
}

bool IsMasked(const EventRecord& event, short mask) {
    return event.what >= 0 && event.what < 16 && (mask >> event.what & 1) != 0;
}

// A press ends with its mouse-up; a second mouse-down means that the mouse-up was missed.
bool PressIsOver(const QueueEntry& entry) {
    return !IsHit(entry) && (entry.event.what == mouseUp || entry.event.what == mouseDown);
}

template <class Wanted> std::optional<QueueEntry> TakeFirst(Wanted wanted) {
    const auto found = std::find_if(theQueue.begin(), theQueue.end(), wanted);
    if (found == theQueue.end()) return std::nullopt;
    const QueueEntry entry = *found;
    theQueue.erase(found);
    return entry;
}

} // namespace

void PostEvent(const EventRecord& event) {
    AppendToQueue({event});
}

void AppendToQueue(const QueueEntry& entry) {
    theQueue.push_back(entry);
}

std::optional<QueueEntry> TakeFromQueue(DialogPtr dialog) {
    return TakeFirst(
        [&](const QueueEntry& entry) { return !IsHit(entry) || entry.dialog == dialog; });
}

bool EndOfPressWaits() {
    return std::any_of(theQueue.begin(), theQueue.end(), PressIsOver);
}

std::optional<EventRecord> TakeQueuedEvent(short mask) {
    const auto entry = TakeFirst([&](const QueueEntry& waiting) {
        return !IsHit(waiting) && IsMasked(waiting.event, mask);
    });
    return entry ? std::optional(entry->event) : std::nullopt;
}

void ForgetHits(DialogPtr dialog) {
    std::erase_if(theQueue,
                  [&](const QueueEntry& entry) { return IsHit(entry) && entry.dialog == dialog; });
}

void EmptyQueue() {
    theQueue.clear();
}
