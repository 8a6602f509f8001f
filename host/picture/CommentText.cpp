#include "CommentText.h"

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
