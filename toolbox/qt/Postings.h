// Everything that the display tells the toolbox, counted, so that waiting ends with the first word.
#pragma once

#include "EventSource.h"

class Postings {
  public:
    void Event(const EventRecord& event);
    /// True when the module's filter took the event.
    bool Offer(DialogPtr dialog, const EventRecord& event);
    /// Reports the item; one that is missing or disabled has no hits.
    void Hit(DialogPtr dialog, short item);
    /// False when the entry cannot be chosen; the pop-up is then as it was.
    bool Entry(DialogPtr dialog, short item, short entry);
    void Text(DialogPtr dialog, short item, const std::string& text);

    /// Grows with each posting.
    unsigned Count() const { return count; }

  private:
    unsigned count = 0;
};
