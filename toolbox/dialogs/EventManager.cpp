#include "EventManager.h"

#include "EventQueue.h"
#include "EventSource.h"
#include "QuickDraw.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <deque>

namespace {

constexpr int kTicksPerSecond = 60;
constexpr std::uint32_t kUsualDoubleClick = 30;
constexpr int kPollMilliseconds = 16; // while the button is held

thread_local std::deque<QueueEntry> theQueue;

constexpr bool IsHit(const QueueEntry& entry) {
    return entry.item != 0;
}

bool IsMasked(const EventRecord& event, short mask) {
    return event.what >= 0 && event.what < 16 && (mask >> event.what & 1) != 0;
}

template <class Wanted> std::optional<QueueEntry> TakeFirst(Wanted wanted) {
    const auto found = std::find_if(theQueue.begin(), theQueue.end(), wanted);
    if (found == theQueue.end()) return std::nullopt;
    const QueueEntry entry = *found;
    theQueue.erase(found);
    return entry;
}

/// The source, or null when none can go on.
EventSource* WorkingSource() {
    EventSource* const source = CurrentEventSource();
    return source && !source->Failed() ? source : nullptr;
}

// A press ends with its mouse-up; a second mouse-down means that the mouse-up was missed.
bool PressIsOver(const QueueEntry& entry) {
    return !IsHit(entry) && (entry.event.what == mouseUp || entry.event.what == mouseDown);
}

bool PressGoesOn() {
    EventSource* const source = WorkingSource();
    return source && source->ButtonDown() &&
           std::none_of(theQueue.begin(), theQueue.end(), PressIsOver);
}

} // namespace

void AppendToQueue(const QueueEntry& entry) {
    theQueue.push_back(entry);
}

std::optional<QueueEntry> TakeFromQueue(DialogPtr dialog) {
    return TakeFirst(
        [&](const QueueEntry& entry) { return !IsHit(entry) || entry.dialog == dialog; });
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

void PostEvent(const EventRecord& event) {
    AppendToQueue({event});
}

Boolean StillDown() {
    if (!PressGoesOn()) return false;
    DrawInvalidItems();
    CurrentEventSource()->Pump(kPollMilliseconds);
    return PressGoesOn();
}

void GetMouse(Point* local) {
    EventSource* const source = CurrentEventSource();
    *local = source ? source->MousePosition() : Point();
    GlobalToLocal(local);
}

Boolean GetNextEvent(short mask, EventRecord* event) {
    if (EventSource* const source = WorkingSource()) source->Pump(0);
    const auto taken = TakeQueuedEvent(mask);
    *event = taken ? *taken : EventRecord();
    if (!taken) event->when = TickCount();
    return taken.has_value();
}

void GetKeys(KeyMap keys) {
    std::memset(keys, 0, sizeof(KeyMap));
    if (EventSource* const source = WorkingSource()) source->ReadKeys(keys);
}

std::uint32_t TickCount() {
    if (EventSource* const source = CurrentEventSource()) return source->Ticks();
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, kTicksPerSecond>>;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<Ticks>(now).count());
}

std::uint32_t GetDblTime() {
    EventSource* const source = CurrentEventSource();
    return source ? source->DoubleClickTicks() : kUsualDoubleClick;
}
