#include "CommentText.h"

#include <algorithm>

namespace gif89 {

namespace {

std::string_view CutAtZero(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

// Length of the well-formed character at the front (RFC 3629), 0 if there is none.
std::size_t CharacterBytes(std::string_view bytes) {
    const auto at = [bytes](std::size_t n) {
        return n < bytes.size() ? static_cast<unsigned char>(bytes[n]) : 0U;
    };
    const unsigned first = at(0);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4) return 0;
    for (std::size_t n = 1; n < length; ++n)
        if ((at(n) & 0xC0) != 0x80) return 0;
    // Overlong forms, surrogates and values above U+10FFFF show in the second byte.
    if ((first == 0xE0 && at(1) < 0xA0) || (first == 0xED && at(1) > 0x9F)) return 0;
    if ((first == 0xF0 && at(1) < 0x90) || (first == 0xF4 && at(1) > 0x8F)) return 0;
    return length;
}

// Also those of the second set of control characters, U+0080 to U+009F.
bool IsControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    return first < 0x20 || first == 0x7F ||
           (first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0);
}

std::string Escape(char byte) {
    constexpr std::string_view kNamed = "\a\b\t\n\v\f\r", kNames = "abtnvfr";
    const std::size_t named = kNamed.find(byte);
    if (named != std::string_view::npos) return {'\\', kNames[named]};
    const auto digit = [byte](int shift) {
        return static_cast<char>('0' + (static_cast<unsigned char>(byte) >> shift & 7));
    };
    return {'\\', digit(6), digit(3), digit(0)};
}

bool IsUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = CharacterBytes(bytes);
        if (length == 0) return false;
        bytes.remove_prefix(length);
    }
    return true;
}

} // namespace

std::string CommentText(std::string_view bytes) {
    const std::string_view text = CutAtZero(bytes);
    return IsUtf8(text) ? std::string(text) : CommentTextFromLatin1(text);
}

std::string TerminalText(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = CharacterBytes(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        if (length > 0 && !IsControl(character))
            shown += character;
        else
            for (const char byte : character) shown += Escape(byte);
        text.remove_prefix(character.size());
    }
    return shown;
}

std::string CommentTextFromLatin1(std::string_view bytes) {
    std::string text;
    for (const char character : CutAtZero(bytes)) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            text += character;
            continue;
        }
        text += static_cast<char>(0xC0 | code >> 6);
        text += static_cast<char>(0x80 | (code & 0x3F));
    }
    return text;
}

} // namespace gif89
