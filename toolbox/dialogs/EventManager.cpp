#include "EventManager.h"

#include "DrawDialogs.h"
#include "EventQueue.h"
#include "EventSource.h"
#include "QuickDraw.h"

#include <chrono>
#include <cstring>

namespace {

constexpr int kTicksPerSecond = 60;
constexpr std::uint32_t kUsualDoubleClick = 30;
constexpr int kPollMilliseconds = 16; // while the button is held

/// The source, or null when none can go on.
EventSource* WorkingSource() {
    EventSource* const source = CurrentEventSource();
    return source && !source->Failed() ? source : nullptr;
}

bool PressGoesOn() {
    EventSource* const source = WorkingSource();
    return source && source->ButtonDown() && !EndOfPressWaits();
}

} // namespace

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
