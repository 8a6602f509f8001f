// A source of events that notes what it is told and does what the test says when it is asked.
#pragma once

#include "DialogManager.h"
#include "EventSource.h"

#include <deque>
#include <functional>

class PlainSource : public EventSource {
  public:
    std::vector<std::string> changes; ///< "4 value" and the like
    std::vector<std::string> alerts;
    Surface* surface = nullptr;                ///< where new dialogs draw
    std::deque<std::function<void()>> actions; ///< one is done by each waiting Pump; then it fails
    bool hasFailed = false;
    bool buttonIsDown = false;
    int pumps = 0;

    void DialogOpened(DialogPtr dialog) override { dialog->surface = surface; }
    void DialogShown(DialogPtr) override {}
    void DialogClosed(DialogPtr) override {}
    void ItemChanged(DialogPtr, short item, ItemChange change) override {
        constexpr const char* kNames[] = {"look", "state", "value", "title",
                                          "text", "menu",  "rect",  "focus"};
        changes.push_back(std::to_string(item) + " " + kNames[static_cast<int>(change)]);
    }
    void Pump(int milliseconds) override {
        ++pumps;
        if (milliseconds == 0) return;
        hasFailed = hasFailed || actions.empty();
        if (hasFailed) return;
        const auto action = actions.front();
        actions.pop_front();
        action();
    }
    bool ButtonDown() override { return buttonIsDown; }
    Point MousePosition() override { return {}; }
    void ReadKeys(KeyMap keys) override { keys[kKeyOption >> 3] |= 1 << (kKeyOption & 7); }
    std::uint32_t Ticks() override { return static_cast<std::uint32_t>(pumps); }
    std::uint32_t DoubleClickTicks() override { return 30; }
    DialogPtr DialogAt(Point) override {
        return OpenDialogs().empty() ? nullptr : OpenDialogs().front();
    }
    bool Failed() override { return hasFailed; }
    void ShowCursor(const Cursor*) override {}
    bool PickColor(Point, const std::string&, const RGBColor&, RGBColor*) override { return false; }
    void Alert(AlertKind, const std::string& sentence) override { alerts.push_back(sentence); }
};
