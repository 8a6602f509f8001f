// Between length-prefixed strings and the standard library's.
#pragma once

#include "ToolboxTypes.h"

#include <algorithm>
#include <string>

/// Null is the empty string.
inline std::string FromPascal(ConstStr255Param text) {
    return text ? std::string(text + 1, text + 1 + text[0]) : std::string();
}

/// False for the bytes of a UTF-8 character behind its first.
constexpr bool StartsCharacter(char byte) {
    return (static_cast<std::uint8_t>(byte) & 0xC0) != 0x80;
}

/// The text, or as much of its start as fits 255 bytes without splitting a UTF-8 character.
inline std::string CutText(const std::string& text) {
    constexpr std::size_t kMost = 255;
    if (text.size() <= kMost) return text;
    std::size_t end = kMost;
    while (end > 0 && !StartsCharacter(text[end])) --end;
    return text.substr(0, end);
}

/// `result` has room for a Str255; longer texts are cut.
inline void ToPascal(const std::string& text, StringPtr result) {
    const std::string cut = CutText(text);
    result[0] = static_cast<std::uint8_t>(cut.size());
    std::copy(cut.begin(), cut.end(), result + 1);
}
