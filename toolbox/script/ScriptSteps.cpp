// What the acts of a script are made of: each becomes steps when it begins, or a refusal.
#include "DialogManager.h"
#include "PascalStrings.h"
#include "QuickDraw.h"
#include "ScriptSource.h"

#include <algorithm>

namespace {

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

std::vector<std::string> SplitCharacters(const std::string& text) {
    std::vector<std::string> characters;
    for (const char byte : text) {
        if (characters.empty() || StartsCharacter(byte)) characters.emplace_back();
        characters.back() += byte;
    }
    return characters;
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

} // namespace

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

ScriptSource::Step ScriptSource::PressStep(DialogPtr dialog, Point local) const {
    Step press = PointerStep(Step::Kind::press, dialog, local);
    const auto number = static_cast<short>(FindDialogItem(dialog, local) + 1);
    const DialogItem* const item = dialog->Item(number);
    if (item && item->BaseKind() == kEditTextItem) press.number = number;
    return press;
}

void ScriptSource::ExpandPress(DialogPtr dialog, Point local) {
    steps.push_back(PointerStep(Step::Kind::move, dialog, local));
    steps.push_back(PressStep(dialog, local));
    steps.push_back(PointerStep(Step::Kind::release, dialog, local));
}

void ScriptSource::ExpandDrag(DialogPtr dialog, const Act& act) {
    steps.push_back(PointerStep(Step::Kind::move, dialog, act.points.front()));
    steps.push_back(PressStep(dialog, act.points.front()));
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
    steps.push_back(PointerStep(Step::Kind::move, dialog, local));
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
