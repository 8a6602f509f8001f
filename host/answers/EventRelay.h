// Stands between the toolbox and whoever operates its dialogs, and hands everything on; for
// classes that listen in.
#pragma once

#include "EventSource.h"

#include <string>

namespace gif89 {

class EventRelay : public EventSource {
  public:
    /// `operated` must outlive the relay.
    explicit EventRelay(EventSource& operated) : inner(operated) {}

    void DialogOpened(DialogPtr dialog) override { inner.DialogOpened(dialog); }
    void DialogShown(DialogPtr dialog) override { inner.DialogShown(dialog); }
    void DialogClosed(DialogPtr dialog) override { inner.DialogClosed(dialog); }
    void ItemChanged(DialogPtr dialog, short item, ItemChange change) override {
        inner.ItemChanged(dialog, item, change);
    }
    void Pump(int milliseconds) override { inner.Pump(milliseconds); }
    bool ButtonDown() override { return inner.ButtonDown(); }
    Point MousePosition() override { return inner.MousePosition(); }
    void ReadKeys(KeyMap keys) override { inner.ReadKeys(keys); }
    std::uint32_t Ticks() override { return inner.Ticks(); }
    std::uint32_t DoubleClickTicks() override { return inner.DoubleClickTicks(); }
    DialogPtr DialogAt(Point global) override { return inner.DialogAt(global); }
    bool Failed() override { return inner.Failed(); }
    void ShowCursor(const Cursor* cursor) override { inner.ShowCursor(cursor); }
    bool PickColor(Point where, const std::string& prompt, const RGBColor& start,
                   RGBColor* picked) override {
        return inner.PickColor(where, prompt, start, picked);
    }
    void Alert(AlertKind kind, const std::string& sentence) override {
        inner.Alert(kind, sentence);
    }

  private:
    EventSource& inner;
};

} // namespace gif89
