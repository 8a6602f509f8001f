// The seam between dialogs as data and whoever shows and operates them: a script or a display.
#pragma once

#include "DialogRecord.h"
#include "EventTypes.h"

#include <string>

#pragma GCC visibility push(default)

/// What of an item has changed.
enum class ItemChange : std::uint8_t {
    look,  ///< static text or picture is to be drawn again
    state, ///< enabled or not, highlight
    value, ///< a control's value, minimum or maximum
    title, ///< a control's title
    text,  ///< an edit text's content
    menu,  ///< a pop-up's entries
    rect,  ///< where it lies
    focus, ///< an edit text is to be selected whole and get the keys, or its activation changed
};

/// Operates the dialogs of one thread. The toolbox calls it; it posts what happens with the calls
/// of SourceCalls.h and EventQueue.h.
class EventSource {
  public:
    virtual ~EventSource() = default;

    // Dialogs come and go
    virtual void DialogOpened(DialogPtr dialog) = 0; ///< still invisible; sets dialog->surface
    virtual void DialogShown(DialogPtr dialog) = 0;
    virtual void DialogClosed(DialogPtr dialog) = 0; ///< the record is gone after this call
    virtual void ItemChanged(DialogPtr dialog, short item, ItemChange change) = 0;

    // Input
    /// Waits up to so long for something to happen, posts it, and returns
    /// as soon as something was posted. The only call that waits.
    virtual void Pump(int milliseconds) = 0;
    virtual bool ButtonDown() = 0;
    virtual Point MousePosition() = 0; ///< global
    virtual void ReadKeys(KeyMap keys) = 0;
    virtual std::uint32_t Ticks() = 0;
    virtual std::uint32_t DoubleClickTicks() = 0;
    /// The dialog at a global point, or null when something else lies there.
    virtual DialogPtr DialogAt(Point global) = 0;
    /// True once the source cannot go on: dialogs then end as if cancelled.
    virtual bool Failed() = 0;

    // Questions
    virtual void ShowCursor(const Cursor* cursor) = 0; ///< null is the arrow
    virtual bool PickColor(Point where, const std::string& prompt, const RGBColor& start,
                           RGBColor* picked) = 0;
    /// Shows a sentence with one button; `kind` tells how grave it is.
    enum class AlertKind : std::uint8_t { note, caution, stop };
    virtual void Alert(AlertKind kind, const std::string& sentence) = 0;
};

/// Makes `source` operate this thread's dialogs and returns the one before; null has every dialog
/// cancelled at once. The caller keeps ownership.
EventSource* SetEventSource(EventSource* source);
EventSource* CurrentEventSource();
/// Tells the source, if there is one, that an item has changed.
void TellSource(DialogPtr dialog, short item, ItemChange change);

#pragma GCC visibility pop
