// What the user does: events in a queue, and the state of mouse and keys.
#pragma once

#include "EventTypes.h"

#pragma GCC visibility push(default)

/// True while the button of the current press stays down and no mouse-up waits in the queue. Draws
/// what is invalid and waits a little for the next move, so that loops around it cost no time.
Boolean StillDown();
/// Where the mouse is, local to the current port.
void GetMouse(Point* local);
/// Takes the first waiting event that the mask allows; false with a null event when there is none.
Boolean GetNextEvent(short mask, EventRecord* event);
void GetKeys(KeyMap keys);
/// Sixtieths of a second since some start.
std::uint32_t TickCount();
/// Ticks within which two presses are a double click.
std::uint32_t GetDblTime();

#pragma GCC visibility pop
