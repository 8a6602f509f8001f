#include "EventTranslation.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int kPeriod = 47;

/// Keys with a code of their own, and the character that classic keyboards send for them.
constexpr struct KeyCode {
    int key;
    short code;
    char character;
} kKeyCodes[] = {
    {Qt::Key_Return, kKeyReturn, '\r'},
    {Qt::Key_Enter, kKeyEnter, 3},
    {Qt::Key_Escape, kKeyEscape, 27},
    {Qt::Key_Backspace, kKeyDelete, 8},
    {Qt::Key_Space, kKeySpace, ' '},
    {Qt::Key_Tab, 48, '\t'},
    {Qt::Key_Period, kPeriod, '.'},
    {Qt::Key_Delete, 117, 127},
    {Qt::Key_Left, 123, 28},
    {Qt::Key_Right, 124, 29},
    {Qt::Key_Down, 125, 31},
    {Qt::Key_Up, 126, 30},
};

const KeyCode* FindKey(int key) {
    const auto* found = std::find_if(std::begin(kKeyCodes), std::end(kKeyCodes),
                                     [key](const KeyCode& entry) { return entry.key == key; });
    return found == std::end(kKeyCodes) ? nullptr : found;
}

std::int16_t Clamp(int coordinate) {
    using Limits = std::numeric_limits<std::int16_t>;
    return static_cast<std::int16_t>(std::clamp<int>(coordinate, Limits::min(), Limits::max()));
}

int Character(const QKeyEvent& event, const KeyCode* known) {
    if (known) return known->character;
    if (event.text().isEmpty()) return 0;
    // With Control the text is a control character; dialogs expect the key's own.
    if (event.modifiers() & Qt::ControlModifier && event.key() < 0x80)
        return QChar(event.key()).toLower().toLatin1();
    return static_cast<unsigned char>(event.text().at(0).toLatin1());
}

} // namespace

Point ToPoint(QPoint point) {
    return {Clamp(point.y()), Clamp(point.x())};
}

std::int16_t ToModifiers(Qt::KeyboardModifiers modifiers) {
    int bits = 0;
    if (modifiers & Qt::ControlModifier) bits |= cmdKey;
    if (modifiers & Qt::ShiftModifier) bits |= shiftKey;
    if (modifiers & (Qt::AltModifier | Qt::MetaModifier)) bits |= optionKey;
    return static_cast<std::int16_t>(bits);
}

void AddModifierKeys(KeyMap keys, Qt::KeyboardModifiers modifiers) {
    const int bits = ToModifiers(modifiers);
    if (bits & cmdKey) SetKey(keys, kKeyCommand, true);
    if (bits & shiftKey) SetKey(keys, kKeyShift, true);
    if (bits & optionKey) SetKey(keys, kKeyOption, true);
}

void SetKey(KeyMap keys, short code, bool down) {
    const auto bit = static_cast<std::uint8_t>(1 << (code & 7));
    std::uint8_t& byte = keys[code >> 3];
    byte = static_cast<std::uint8_t>(down ? byte | bit : byte & ~bit);
}

short ToKeyCode(int key) {
    const KeyCode* known = FindKey(key);
    return known ? known->code : short{-1};
}

bool IsModifierKey(int key) {
    return (key >= Qt::Key_Shift && key <= Qt::Key_ScrollLock) || key == Qt::Key_AltGr ||
           key == Qt::Key_Super_L || key == Qt::Key_Super_R;
}

EventRecord ToKeyEvent(const QKeyEvent& event) {
    const KeyCode* known = FindKey(event.key());
    EventRecord record;
    record.what = event.isAutoRepeat() ? autoKey : keyDown;
    record.message = (known ? known->code : 0) << 8 | Character(event, known);
    record.modifiers = ToModifiers(event.modifiers());
    return record;
}

bool EndsDialog(const EventRecord& keyEvent) {
    const int code = keyEvent.message >> 8;
    return code == kKeyReturn || code == kKeyEnter || code == kKeyEscape ||
           (code == kPeriod && keyEvent.modifiers & cmdKey);
}
