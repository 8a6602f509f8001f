// An act becomes steps when it begins, each step is played by one look for events, and between acts
// one look brings nothing, so that the modal loop makes a null event.
#include "ScriptSource.h"

#include "DialogManager.h"
#include "EventQueue.h"
#include "ModalDialog.h"
#include "PascalStrings.h"
#include "SourceCalls.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr int kMostActs = 100000; // in one dialog; a script that needs more goes round in circles
constexpr std::uint32_t kTicksPerPump = 2;
constexpr std::uint32_t kTicksPerDoubleClick = 30;

// Never goes back, since modules keep times from one dialog to the next. A new script begins later
// than a double click after the one before.
thread_local std::uint32_t theTicks = 0;

std::string NameOf(DialogPtr dialog) {
    return "dialog " + std::to_string(dialog->resourceID);
}

/// An event's character; '?' for one that is not Latin-1.
std::uint8_t ToLatin1(const std::string& character) {
    if (character.empty()) return 0;
    const auto first = static_cast<std::uint8_t>(character[0]);
    if (character.size() == 1 && first < 0x80) return first;
    if (character.size() != 2 || (first & 0xFC) != 0xC0) return '?';
    return static_cast<std::uint8_t>(first << 6 | (character[1] & 0x3F));
}

void DropLastCharacter(std::string& text) {
    while (!text.empty() && !StartsCharacter(text.back())) text.pop_back();
    if (!text.empty()) text.pop_back();
}

} // namespace

ScriptSource::ScriptSource(Decide decideProc) : decide(std::move(decideProc)) {
    theTicks += 2 * kTicksPerDoubleClick;
}

ScriptSource::ScriptSource(std::vector<Act> acts) : pending(acts.begin(), acts.end()) {
    theTicks += 2 * kTicksPerDoubleClick;
}

// Dialogs

void ScriptSource::DialogOpened(DialogPtr dialog) {
    dialog->surface = target;
    dialogs[dialog] = DialogState();
}

void ScriptSource::DialogShown(DialogPtr) {
    hasRested = false;
}

// A press that was under way ends with its dialog: the next one hears nothing of it.
void ScriptSource::DialogClosed(DialogPtr dialog) {
    dialogs.erase(dialog);
    steps.clear();
    buttonIsDown = false;
    hasRested = false;
}

void ScriptSource::ItemChanged(DialogPtr dialog, short item, ItemChange change) {
    if (item != dialog->editItem) return;
    if (change == ItemChange::focus) dialogs[dialog].textIsSelected = true;
    if (change == ItemChange::text) dialogs[dialog].textIsSelected = false;
}

// Playing

void ScriptSource::Pump(int milliseconds) {
    theTicks += kTicksPerPump;
    // Who only looks, without waiting, gets the rest of a press and no new act.
    if (Failed() || (milliseconds == 0 && !buttonIsDown)) return;
    if (steps.empty() && !BeginAct()) return;
    const Step step = steps.front();
    steps.pop_front();
    if (steps.empty()) hasRested = false;
    Play(step);
}

DialogPtr ScriptSource::DialogInFront() {
    const auto& open = OpenDialogs();
    const auto found =
        std::find_if(open.begin(), open.end(), [](DialogPtr dialog) { return dialog->visible; });
    return found == open.end() ? nullptr : *found;
}

bool ScriptSource::BeginAct() {
    if (!std::exchange(hasRested, true)) return false;
    const DialogPtr dialog = DialogInFront();
    if (!dialog) {
        Fail("The script has no dialog to act in, expected one that is shown.");
        return false;
    }
    Expand(dialog, NextAct(dialog));
    if (Failed()) steps.clear();
    return !steps.empty();
}

Act ScriptSource::NextAct(DialogPtr dialog) {
    if (dialog && ++dialogs[dialog].acts > kMostActs)
        return FailScript("The script played " + std::to_string(kMostActs) + " acts in " +
                          NameOf(dialog) + " without ending it.");
    if (pending.empty() && decide) return decide(dialog);
    if (pending.empty())
        return FailScript("The script ran out of acts while " +
                          (dialog ? NameOf(dialog) : "a question") + " was waiting.");
    Act act = std::move(pending.front());
    pending.pop_front();
    return act;
}

void ScriptSource::Play(const Step& step) {
    switch (step.kind) {
    case Step::Kind::move:
        mouse = step.where;
        return;
    case Step::Kind::press:
        mouse = step.where;
        buttonIsDown = true;
        if (step.number != 0) dialogs[step.dialog].textIsSelected = false;
        return PostEvent(MakeEvent(mouseDown));
    case Step::Kind::release:
        mouse = step.where;
        buttonIsDown = false;
        return PostEvent(MakeEvent(mouseUp));
    case Step::Kind::keyDown:
        return SetKey(step.number, true);
    case Step::Kind::keyUp:
        return SetKey(step.number, false);
    case Step::Kind::typeKey:
        return PlayKey(step);
    case Step::Kind::setText:
        dialogs[step.dialog].textIsSelected = false;
        return EditTextChanged(step.dialog, step.number, step.text);
    case Step::Kind::chooseEntry:
        return PlayChoice(step);
    case Step::Kind::wait: // for the tick count of the look that plays it, too
        theTicks += std::max(kTicksPerPump, static_cast<std::uint32_t>(std::max(0, step.ticks))) -
                    kTicksPerPump;
        return;
    }
}

// Keys for an edit text are offered to the filter first, as a native widget's are; all others, and
// those that a modal dialog knows, wait in the queue.
void ScriptSource::PlayKey(const Step& step) {
    EventRecord event = MakeEvent(keyDown);
    event.message = step.number << 8 | ToLatin1(step.text);
    const DialogItem* const edited = step.dialog->Item(step.dialog->editItem);
    const bool takesKeys = edited && step.dialog->editActive && !edited->IsDisabled();
    const bool isText = !step.text.empty() && step.number != kKeyReturn &&
                        step.number != kKeyEnter && step.number != kKeyEscape;
    if (!takesKeys || !isText || (event.modifiers & cmdKey) != 0) return PostEvent(event);
    if (!OfferEvent(step.dialog, event)) EditText(step.dialog, step);
}

void ScriptSource::EditText(DialogPtr dialog, const Step& step) {
    std::string text = dialog->Item(dialog->editItem)->text;
    const bool wasSelected = std::exchange(dialogs[dialog].textIsSelected, false);
    if (wasSelected) text.clear();
    if (step.text != "\b")
        text += step.text;
    else if (!wasSelected)
        DropLastCharacter(text);
    EditTextChanged(dialog, dialog->editItem, text);
}

void ScriptSource::PlayChoice(const Step& step) {
    mouse = step.where;
    if (OfferEvent(step.dialog, MakeEvent(mouseDown))) return;
    if (!ChoosePopUpEntry(step.dialog, step.number, step.entry))
        Refuse(step.dialog, ChooseEntry(step.number, step.entry), "it cannot be chosen any more");
}

EventRecord ScriptSource::MakeEvent(std::int16_t what) const {
    int modifiers = 0;
    if (KeyIsDown(kKeyCommand)) modifiers |= cmdKey;
    if (KeyIsDown(kKeyShift)) modifiers |= shiftKey;
    if (KeyIsDown(kKeyOption)) modifiers |= optionKey;
    return {what, 0, theTicks, mouse, static_cast<std::int16_t>(modifiers)};
}

bool ScriptSource::KeyIsDown(short key) const {
    return (keysDown[key >> 3] >> (key & 7) & 1) != 0;
}

void ScriptSource::SetKey(short key, bool isDown) {
    const int bit = 1 << (key & 7);
    std::uint8_t& byte = keysDown[key >> 3];
    byte = static_cast<std::uint8_t>(isDown ? byte | bit : byte & ~bit);
}

void ScriptSource::Fail(const std::string& reason) {
    if (failure.empty()) failure = reason.empty() ? "The script failed." : reason;
}

void ScriptSource::Refuse(DialogPtr dialog, const Act& act, const std::string& reason) {
    Fail("The script cannot " + DescribeAct(act) + " in " + NameOf(dialog) + ": " + reason + ".");
}

// State

bool ScriptSource::ButtonDown() {
    return buttonIsDown;
}

Point ScriptSource::MousePosition() {
    return mouse;
}

void ScriptSource::ReadKeys(KeyMap keys) {
    std::memcpy(keys, keysDown, sizeof keysDown);
}

std::uint32_t ScriptSource::Ticks() {
    return theTicks;
}

std::uint32_t ScriptSource::DoubleClickTicks() {
    return kTicksPerDoubleClick;
}

DialogPtr ScriptSource::DialogAt(Point global) {
    const DialogPtr dialog = DialogInFront(); // it is modal: nothing behind it is in reach
    if (!dialog) return nullptr;
    const Rect& port = dialog->portRect;
    const int v = global.v - dialog->origin.v, h = global.h - dialog->origin.h;
    const bool isInside = v >= port.top && v < port.bottom && h >= port.left && h < port.right;
    return isInside ? dialog : nullptr;
}

bool ScriptSource::Failed() {
    return !failure.empty();
}

void ScriptSource::ShowCursor(const Cursor* shown) {
    cursor = shown;
}
