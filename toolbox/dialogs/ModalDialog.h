// The modal loop: one event at a time to the filter, then to the dialog.
#pragma once

#include "DialogRecord.h"
#include "EventTypes.h"

#pragma GCC visibility push(default)

/// Sees every event before the dialog does. Nonzero takes the event; *item, when set, is reported.
using ModalFilterProc = Boolean (*)(DialogPtr dialog, EventRecord* event, short* item);
/// Serves events that are not the dialog's.
using ModalEventProc = void(const void* event);

/// Runs the dialog until one item is hit. Null events come about thirty times a second. *item is 0
/// when the filter took an event without naming an item; it is the cancel item when no source
/// operates the dialog or the source has failed.
void MoveableModalDialog(DialogPtr dialog, ModalEventProc* eventProc, ModalFilterProc filter,
                         short* item);

/// For sources: offers an event that a native widget is about to handle to the filter of the modal
/// loop around it; true when the filter took it and the widget must not.
bool OfferEvent(DialogPtr dialog, const EventRecord& event);

#pragma GCC visibility pop
