#include "ModalDialog.h"

#include "Cursors.h"
#include "DialogManager.h"
#include "DrawDialogs.h"
#include "EventManager.h"
#include "EventQueue.h"
#include "EventSource.h"

#include <utility>

namespace {

constexpr int kNullEventMilliseconds = 33; // about thirty null events a second

/// A modal loop that runs on this thread; dialogs opened from a filter run theirs inside.
struct ModalLoop {
    DialogPtr dialog;
    ModalFilterProc filter;
    ModalLoop* outer;
    bool inFilter = false;
};
thread_local ModalLoop* innermostLoop = nullptr;

class RunningLoop {
  public:
    RunningLoop(DialogPtr dialog, ModalFilterProc filter) : loop{dialog, filter, innermostLoop} {
        innermostLoop = &loop;
    }
    RunningLoop(const RunningLoop&) = delete;
    RunningLoop& operator=(const RunningLoop&) = delete;
    ~RunningLoop() { innermostLoop = loop.outer; }

    ModalLoop& Get() { return loop; }

  private:
    ModalLoop loop;
};

using ItemHit = std::optional<short>;

bool CallFilter(ModalLoop& loop, EventRecord event, short* item) {
    if (!loop.filter) return false;
    loop.inFilter = true;
    const bool taken = loop.filter(loop.dialog, &event, item) != 0;
    loop.inFilter = false;
    return taken;
}

ItemHit IfEnabled(DialogPtr dialog, short number) {
    const DialogItem* const item = dialog->Item(number);
    return item && !item->IsDisabled() ? ItemHit(number) : std::nullopt;
}

Point ToLocal(DialogPtr dialog, Point global) {
    GrafPtr before = nullptr;
    GetPort(&before);
    SetPort(dialog);
    GlobalToLocal(&global);
    SetPort(before);
    return global;
}

// The press counts when the button is released where it went down; a missing mouse-up, as when the
// source fails, is no release.
bool TrackRelease(DialogPtr dialog, const Rect& rect) {
    while (StillDown()) {
    }
    const auto release = TakeQueuedEvent(mUpMask);
    if (!release) return false;
    const Point local = ToLocal(dialog, release->where);
    return PtInRect(local, &rect);
}

ItemHit ServePress(DialogPtr dialog, const EventRecord& event) {
    const Point local = ToLocal(dialog, event.where);
    const auto number = static_cast<short>(FindDialogItem(dialog, local) + 1);
    const DialogItem* const item = dialog->Item(number);
    if (!item || item->IsDisabled()) return std::nullopt;
    switch (item->BaseKind()) {
    case kButtonItem:
    case kCheckBoxItem:
        return TrackRelease(dialog, item->rect) ? IfEnabled(dialog, number) : std::nullopt;
    case kResourceControlItem:
        TrackRelease(dialog, item->rect); // entries are chosen through ChoosePopUpEntry
        return std::nullopt;
    case kEditTextItem:
        dialog->editItem = number; // gets the keys; its hits are changes of its text
        return std::nullopt;
    default:
        return number;
    }
}

ItemHit ServeKey(DialogPtr dialog, const EventRecord& event) {
    const int code = event.message >> 8 & 0xFF, character = event.message & 0xFF;
    if (code == kKeyReturn || code == kKeyEnter) return IfEnabled(dialog, dialog->defaultItem);
    const bool isCommandPeriod = character == '.' && (event.modifiers & cmdKey) != 0;
    if (code == kKeyEscape || isCommandPeriod) return IfEnabled(dialog, dialog->cancelItem);
    return std::nullopt;
}

ItemHit ServeEvent(DialogPtr dialog, const EventRecord& event, ModalEventProc* eventProc) {
    if (event.what == keyDown) return ServeKey(dialog, event);
    // A filter that takes a null event has chosen a cursor; elsewhere it is the arrow again.
    if (event.what == nullEvent && dialog->tracksCursor) SetArrowCursor();
    if (event.what != mouseDown) return std::nullopt;
    WindowPtr window = nullptr;
    if (FindWindow(event.where, &window) == inContent && window == dialog)
        return ServePress(dialog, event);
    if (eventProc) eventProc(&event);
    return std::nullopt;
}

std::int16_t ModifiersOf(const KeyMap keys) {
    constexpr std::pair<int, int> kModifiers[] = {
        {kKeyCommand, cmdKey}, {kKeyShift, shiftKey}, {kKeyOption, optionKey}};
    int modifiers = 0;
    for (const auto& [code, bit] : kModifiers)
        if (keys[code >> 3] >> (code & 7) & 1) modifiers |= bit;
    return static_cast<std::int16_t>(modifiers);
}

EventRecord MakeNullEvent(EventSource& source) {
    KeyMap keys;
    GetKeys(keys);
    EventRecord event;
    event.when = source.Ticks();
    event.where = source.MousePosition();
    event.modifiers = ModifiersOf(keys);
    return event;
}

/// Takes one event or hit, or makes a null event, and serves it.
ItemHit ServeNext(ModalLoop& loop, ModalEventProc* eventProc, EventSource& source) {
    DrawInvalidItems();
    auto entry = TakeFromQueue(loop.dialog);
    if (!entry) {
        source.Pump(kNullEventMilliseconds);
        entry = TakeFromQueue(loop.dialog);
    }
    if (source.Failed()) return std::nullopt;
    if (!entry) entry = QueueEntry{MakeNullEvent(source)};
    if (entry->item != 0)
        return entry->byFilter ? ItemHit(entry->item) : IfEnabled(loop.dialog, entry->item);
    short item = 0;
    if (CallFilter(loop, entry->event, &item)) return item;
    return ServeEvent(loop.dialog, entry->event, eventProc);
}

} // namespace

void MoveableModalDialog(DialogPtr dialog, ModalEventProc* eventProc, ModalFilterProc filter,
                         short* item) {
    RunningLoop running(dialog, filter);
    for (ItemHit hit; !hit;) {
        EventSource* const source = CurrentEventSource();
        if (!source || source->Failed())
            hit = dialog->cancelItem != 0 ? dialog->cancelItem : short{1};
        else
            hit = ServeNext(running.Get(), eventProc, *source);
        if (hit) *item = *hit;
    }
}

bool OfferEvent(DialogPtr dialog, const EventRecord& event) {
    ModalLoop* loop = innermostLoop;
    while (loop && loop->dialog != dialog) loop = loop->outer;
    if (!loop) return false;
    // The filter is following a press; it gets this event when it has finished.
    if (loop->inFilter) {
        PostEvent(event);
        return true;
    }
    short item = 0;
    if (!CallFilter(*loop, event, &item)) return false;
    if (item != 0) AppendToQueue({{}, dialog, item, true});
    return true;
}
