// Stored data under construction: big-endian, as every part of a resource file is.
#pragma once

#include "BigEndian.h"
#include "ToolboxTypes.h"

#include <string>
#include <vector>

namespace gif89 {

using Bytes = std::vector<std::uint8_t>;

/// Appends an integer of T's width.
template <std::integral T> void Put(Bytes& bytes, std::type_identity_t<T> value) {
    bytes.resize(bytes.size() + sizeof(T));
    PutBE<T>(bytes.data() + bytes.size() - sizeof(T), value);
}
inline void PutByte(Bytes& bytes, int value) {
    Put<std::uint8_t>(bytes, static_cast<std::uint8_t>(value));
}
inline void PutWord(Bytes& bytes, int value) {
    Put<std::int16_t>(bytes, static_cast<std::int16_t>(value));
}
inline void PutLong(Bytes& bytes, std::uint32_t value) {
    Put<std::uint32_t>(bytes, value);
}

inline void PutBytes(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}
/// A length-prefixed string; the text has at most 255 bytes.
inline void PutString(Bytes& bytes, const std::string& text) {
    PutByte(bytes, static_cast<int>(text.size()));
    bytes.insert(bytes.end(), text.begin(), text.end());
}
inline void PutRect(Bytes& bytes, const Rect& rect) {
    for (const int side : {rect.top, rect.left, rect.bottom, rect.right}) PutWord(bytes, side);
}
inline void PadToEven(Bytes& bytes) {
    if (bytes.size() % 2 != 0) PutByte(bytes, 0);
}

} // namespace gif89
