// Events as records, and the numbers of keys.
#pragma once

#include "ToolboxTypes.h"

enum : std::int16_t { nullEvent = 0, mouseDown = 1, mouseUp = 2, keyDown = 3, autoKey = 5 };

/// Bits of an event's modifiers.
enum : std::int16_t { cmdKey = 0x100, shiftKey = 0x200, optionKey = 0x800 };

/// Masks of GetNextEvent: 1 << event kind.
constexpr short mUpMask = 1 << mouseUp;

/// Virtual key codes.
enum : std::int16_t {
    kKeyReturn = 36,
    kKeySpace = 49,
    kKeyDelete = 51,
    kKeyEscape = 53,
    kKeyCommand = 55,
    kKeyShift = 56,
    kKeyOption = 58,
    kKeyEnter = 76,
};

struct EventRecord {
    std::int16_t what = nullEvent;
    std::int32_t message = 0; ///< keys: virtual key code << 8 | character (Latin-1)
    std::uint32_t when = 0;   ///< ticks
    Point where;              ///< global
    std::int16_t modifiers = 0;
};

/// Key map: key `code` is bit (code & 7) of byte code >> 3.
using KeyMap = std::uint8_t[16];
