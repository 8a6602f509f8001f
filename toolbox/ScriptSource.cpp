// An act becomes steps when it begins, each step is played by one look for events, and between acts
// one look brings nothing, so that the modal loop makes a null event.
#include "ScriptSource.h"

#include "FileManager.h"
#include "QuickDraw.h"

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

DialogPtr DialogInFront() {
    const auto& open = OpenDialogs();
    const auto found =
        std::find_if(open.begin(), open.end(), [](DialogPtr dialog) { return dialog->visible; });
    return found == open.end() ? nullptr : *found;
}

std::string Describe(const Act& act) {
    const std::string item = "item " + std::to_string(act.item);
    switch (act.kind) {
    case Act::Kind::pressItem:
        return "press " + item;
    case Act::Kind::pressAt:
        return "press at a point";
    case Act::Kind::drag:
        return "drag";
    case Act::Kind::moveTo:
        return "move the mouse";
    case Act::Kind::type:
        return "type \"" + act.text + "\"";
    case Act::Kind::setText:
        return "set the text of " + item;
    case Act::Kind::holdKey:
        return "hold key " + std::to_string(act.key);
    case Act::Kind::releaseKey:
        return "release key " + std::to_string(act.key);
    case Act::Kind::pressKey:
        return "press key " + std::to_string(act.key);
    case Act::Kind::chooseEntry:
        return "choose " +
               (act.entry != 0 ? "entry " + std::to_string(act.entry) : "\"" + act.text + "\"") +
               " in " + item;
    case Act::Kind::idle:
        return "wait";
    case Act::Kind::pickFile:
        return "pick the file " + act.text;
    case Act::Kind::cancelFile:
        return "cancel a file dialog";
    case Act::Kind::pickColor:
        return "pick a colour";
    case Act::Kind::cancelColor:
        return "cancel a colour dialog";
    case Act::Kind::fail:
        return "fail";
    }
    return {};
}

std::string NameOf(DialogPtr dialog) {
    return "dialog " + std::to_string(dialog->resourceID);
}

constexpr bool IsKey(short key) {
    return key >= 0 && key < 8 * static_cast<int>(sizeof(KeyMap));
}

constexpr struct {
    char character;
    short key;
} kNamedKeys[] = {{'\r', kKeyReturn},
                  {'\x03', kKeyEnter},
                  {'\x1B', kKeyEscape},
                  {'\b', kKeyDelete},
                  {' ', kKeySpace}};

std::string CharacterOf(short key) {
    for (const auto& named : kNamedKeys)
        if (named.key == key) return std::string(1, named.character);
    return {};
}

short KeyOf(const std::string& character) {
    for (const auto& named : kNamedKeys)
        if (character[0] == named.character) return named.key;
    return 0;
}

constexpr bool StartsCharacter(char byte) {
    return (static_cast<std::uint8_t>(byte) & 0xC0) != 0x80;
}

std::vector<std::string> SplitCharacters(const std::string& text) {
    std::vector<std::string> characters;
    for (const char byte : text) {
        if (characters.empty() || StartsCharacter(byte)) characters.emplace_back();
        characters.back() += byte;
    }
    return characters;
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

/// The number of the entry that the act names; 0 when the menu has none that can be chosen.
short FindEntry(const MenuInfo& menu, const Act& act) {
    const auto count = static_cast<short>(menu.entries.size());
    for (short entry = 1; entry <= count; ++entry) {
        const bool isNamed =
            act.entry != 0 ? entry == act.entry
                           : menu.entries[static_cast<std::size_t>(entry) - 1].text == act.text;
        if (isNamed && menu.CanChoose(entry)) return entry;
    }
    return 0;
}

CInfoPBRec InfoOf(FSSpec& file) {
    CInfoPBRec info;
    info.ioNamePtr = file.name;
    info.ioVRefNum = file.vRefNum;
    info.ioDirID = file.parID;
    return info;
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
    const Act act = pending.front();
    pending.pop_front();
    return act;
}

void ScriptSource::Expand(DialogPtr dialog, const Act& act) {
    using Kind = Act::Kind;
    const bool takesPoint =
        act.kind == Kind::pressAt || act.kind == Kind::drag || act.kind == Kind::moveTo;
    if (takesPoint && act.points.empty()) return Refuse(dialog, act, "no point is given");
    const bool takesKey =
        act.kind == Kind::holdKey || act.kind == Kind::releaseKey || act.kind == Kind::pressKey;
    if (takesKey && !IsKey(act.key)) return Refuse(dialog, act, "keys are numbered from 0 to 127");

    Point local;
    switch (act.kind) {
    case Kind::pressItem:
        if (FindPressPoint(dialog, act, &local)) ExpandPress(dialog, local);
        return;
    case Kind::pressAt:
        return ExpandPress(dialog, act.points[0]);
    case Kind::drag:
        return ExpandDrag(dialog, act);
    case Kind::moveTo:
        steps.push_back(PointerStep(Step::Kind::move, dialog, act.points[0]));
        return;
    case Kind::type:
        return ExpandTyping(dialog, act.text);
    case Kind::setText:
        if (const DialogItem* const item = RequireItem(dialog, act)) {
            if (item->BaseKind() != kEditTextItem) return Refuse(dialog, act, "it is no edit text");
            steps.push_back({Step::Kind::setText, dialog, {}, act.item, 0, act.text});
        }
        return;
    case Kind::holdKey:
        steps.push_back({Step::Kind::keyDown, dialog, {}, act.key});
        return;
    case Kind::releaseKey:
        steps.push_back({Step::Kind::keyUp, dialog, {}, act.key});
        return;
    case Kind::pressKey:
        return ExpandKey(dialog, act.key);
    case Kind::chooseEntry:
        return ExpandChoice(dialog, act);
    case Kind::idle:
        steps.push_back({Step::Kind::wait, dialog, {}, 0, 0, {}, act.ticks});
        return;
    case Kind::fail:
        return Fail(act.text);
    case Kind::pickFile:
    case Kind::cancelFile:
    case Kind::pickColor:
    case Kind::cancelColor:
        return Refuse(dialog, act, "nothing asks for it");
    }
}

ScriptSource::Step ScriptSource::PointerStep(Step::Kind kind, DialogPtr dialog, Point local) const {
    const Point global = {static_cast<std::int16_t>(local.v + dialog->origin.v),
                          static_cast<std::int16_t>(local.h + dialog->origin.h)};
    return {kind, dialog, global};
}

void ScriptSource::ExpandMove(DialogPtr dialog, Point local) {
    const Step move = PointerStep(Step::Kind::move, dialog, local);
    // A mouse that is there already stays, so that two presses can be a double click.
    if (!(move.where == mouse)) steps.push_back(move);
}

void ScriptSource::ExpandPress(DialogPtr dialog, Point local) {
    ExpandMove(dialog, local);
    steps.push_back(PointerStep(Step::Kind::press, dialog, local));
    steps.push_back(PointerStep(Step::Kind::release, dialog, local));
}

void ScriptSource::ExpandDrag(DialogPtr dialog, const Act& act) {
    ExpandMove(dialog, act.points.front());
    steps.push_back(PointerStep(Step::Kind::press, dialog, act.points.front()));
    for (std::size_t i = 1; i < act.points.size(); ++i)
        steps.push_back(PointerStep(Step::Kind::move, dialog, act.points[i]));
    steps.push_back(PointerStep(Step::Kind::release, dialog, act.points.back()));
}

void ScriptSource::ExpandKey(DialogPtr dialog, short key) {
    const bool isModifier = key == kKeyCommand || key == kKeyShift || key == kKeyOption;
    steps.push_back({Step::Kind::keyDown, dialog, {}, key});
    if (!isModifier) steps.push_back({Step::Kind::typeKey, dialog, {}, key, 0, CharacterOf(key)});
    steps.push_back({Step::Kind::keyUp, dialog, {}, key});
}

void ScriptSource::ExpandTyping(DialogPtr dialog, const std::string& text) {
    for (const std::string& character : SplitCharacters(text))
        steps.push_back({Step::Kind::typeKey, dialog, {}, KeyOf(character), 0, character});
}

void ScriptSource::ExpandChoice(DialogPtr dialog, const Act& act) {
    Point local;
    if (!FindPressPoint(dialog, act, &local)) return;
    const MenuHandle menu = dialog->Item(act.item)->menu;
    if (!menu) return Refuse(dialog, act, "it is no pop-up");
    const short entry = FindEntry(**menu, act);
    if (entry == 0) return Refuse(dialog, act, "its menu has no such entry that can be chosen");
    ExpandMove(dialog, local);
    Step choice = PointerStep(Step::Kind::chooseEntry, dialog, local);
    choice.number = act.item;
    choice.entry = entry;
    steps.push_back(choice);
}

DialogItem* ScriptSource::RequireItem(DialogPtr dialog, const Act& act) {
    DialogItem* const item = dialog->Item(act.item);
    if (!item) {
        Refuse(dialog, act, "there is no such item");
        return nullptr;
    }
    if (item->IsDisabled()) {
        Refuse(dialog, act, "it is disabled");
        return nullptr;
    }
    return item;
}

// The middle, unless an item before this one lies over it; then the first point that is its own.
bool ScriptSource::FindPressPoint(DialogPtr dialog, const Act& act, Point* local) {
    const DialogItem* const item = RequireItem(dialog, act);
    if (!item) return false;
    const Rect& port = dialog->portRect;
    const int top = std::max(item->rect.top, port.top);
    const int left = std::max(item->rect.left, port.left);
    const int bottom = std::min(item->rect.bottom, port.bottom);
    const int right = std::min(item->rect.right, port.right);
    const auto isItsOwn = [&](int v, int h) {
        *local = {static_cast<std::int16_t>(v), static_cast<std::int16_t>(h)};
        return PtInRect(*local, &item->rect) && PtInRect(*local, &port) &&
               FindDialogItem(dialog, *local) == act.item - 1;
    };
    if (isItsOwn((top + bottom) / 2, (left + right) / 2)) return true;
    for (int v = top; v < bottom; ++v)
        for (int h = left; h < right; ++h)
            if (isItsOwn(v, h)) return true;
    Refuse(dialog, act, "no point of it can be pressed");
    return false;
}

void ScriptSource::Play(const Step& step) {
    switch (step.kind) {
    case Step::Kind::move:
        mouse = step.where;
        return;
    case Step::Kind::press: {
        mouse = step.where;
        buttonIsDown = true;
        const Point local = {static_cast<std::int16_t>(mouse.v - step.dialog->origin.v),
                             static_cast<std::int16_t>(mouse.h - step.dialog->origin.h)};
        // A press in an edit text sets the caret.
        const auto item = static_cast<short>(FindDialogItem(step.dialog, local) + 1);
        const DialogItem* const pressed = step.dialog->Item(item);
        if (pressed && pressed->BaseKind() == kEditTextItem)
            dialogs[step.dialog].textIsSelected = false;
        return PostEvent(MakeEvent(mouseDown));
    }
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
    case Step::Kind::wait:
        theTicks += static_cast<std::uint32_t>(std::max(0, step.ticks));
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
    const bool isText = step.text == "\b" || (!step.text.empty() && step.text[0] != '\r' &&
                                              step.text[0] != '\x03' && step.text[0] != '\x1B');
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
    if (failure.empty()) failure = reason;
}

void ScriptSource::Refuse(DialogPtr dialog, const Act& act, const std::string& reason) {
    Fail("The script cannot " + Describe(act) + " in " + NameOf(dialog) + ": " + reason + ".");
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

// Questions

Act ScriptSource::NextAnswer(const char* question) {
    if (Failed()) return FailScript(failure);
    const Act act = NextAct(DialogInFront());
    const bool answersFile = act.kind == Act::Kind::pickFile || act.kind == Act::Kind::cancelFile;
    const bool answersColor =
        act.kind == Act::Kind::pickColor || act.kind == Act::Kind::cancelColor;
    const bool asksColor = std::strcmp(question, "colour") == 0;
    if (act.kind == Act::Kind::fail)
        Fail(act.text);
    else if (asksColor ? !answersColor : !answersFile)
        Fail("The script cannot " + Describe(act) + " while a " + question +
             " dialog is open, expected an answer to it.");
    return act;
}

bool ScriptSource::PickColor(Point, const std::string&, const RGBColor&, RGBColor* picked) {
    const Act act = NextAnswer("colour");
    if (Failed() || act.kind != Act::Kind::pickColor) return false;
    *picked = act.color;
    return true;
}

void ScriptSource::Alert(AlertKind, const std::string& sentence) {
    alerts.push_back(sentence);
}

void ScriptSource::About(const std::vector<std::string>&) {} // read and dismissed

void ScriptSource::PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply* reply) {
    const Act act = NextAnswer("save");
    if (Failed() || act.kind != Act::Kind::pickFile) return;
    if (PathToFSSpec(act.text, &reply->sfFile) != noErr)
        return Fail("The script cannot save to " + act.text + ": there is no such folder.");
    FSSpec file = reply->sfFile;
    CInfoPBRec info = InfoOf(file);
    reply->sfReplacing = PBGetCatInfoSync(&info) == noErr;
    reply->sfGood = 1;
}

void ScriptSource::GetFile(FileFilterProc filter, StandardFileReply* reply) {
    const Act act = NextAnswer("file");
    if (Failed() || act.kind != Act::Kind::pickFile) return;
    OSErr error = PathToFSSpec(act.text, &reply->sfFile);
    FSSpec file = reply->sfFile;
    CInfoPBRec info = InfoOf(file);
    if (error == noErr) error = PBGetCatInfoSync(&info);
    if (error != noErr || (info.ioFlAttrib & kIsDirectory) != 0)
        return Fail("The script cannot open " + act.text + ": there is no such file.");
    if (filter && filter(&info))
        return Fail("The script cannot open " + act.text + ": the dialog does not offer it.");
    reply->sfType = info.fdType;
    reply->sfGood = 1;
}
