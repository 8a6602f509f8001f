// The toolkit's events, keys and positions as the Toolbox knows them.
#pragma once

#include "EventManager.h"

#include <QKeyEvent>
#include <QPoint>

Point ToPoint(QPoint point);
inline QPoint ToQPoint(Point point) {
    return QPoint(point.h, point.v);
}

/// Option is Alt or Super, since window managers keep presses with Alt to themselves; command is
/// Control.
std::int16_t ToModifiers(Qt::KeyboardModifiers modifiers);
/// Adds the keys behind the modifiers to a key map.
void AddModifierKeys(KeyMap keys, Qt::KeyboardModifiers modifiers);
void SetKey(KeyMap keys, short code, bool down);

/// The virtual code of a key that dialogs may ask for by code, or -1.
short ToKeyCode(int key);
/// True for keys that only modify others.
bool IsModifierKey(int key);

/// keyDown, or autoKey for repetitions, with code and character; time and position are left open.
EventRecord ToKeyEvent(const QKeyEvent& event);
/// Return, Enter, Escape and Command-period press the default or cancel item, unless a button has
/// the keys and takes Return for itself.
bool EndsDialog(const EventRecord& keyEvent);
