#include "Scanner.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace gif89 {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::uint32_t ByteAt(const std::string& text, std::size_t i) {
    return i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0;
}

/// Bytes of the well-formed character at `start`; 0 when there is none.
std::size_t CharacterLength(const std::string& text, std::size_t start) {
    const std::uint32_t lead = ByteAt(text, start);
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    std::uint32_t code = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((ByteAt(text, start + i) & 0xC0) != 0x80) return 0;
        code = code << 6 | (ByteAt(text, start + i) & 0x3F);
    }
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return lead < 0xC0 || lead > 0xF4 || code < kLeast[length] || code > 0x10FFFF || isSurrogate
               ? 0
               : length;
}

void CheckUTF8(const std::string& file, const std::string& source) {
    int line = 1;
    for (std::size_t i = 0; i < source.size();) {
        const std::size_t length = CharacterLength(source, i);
        if (length == 0)
            throw SourceError({file, line}, "a byte is no part of a character, expected UTF-8");
        if (source[i] == '\n') ++line;
        i += length;
    }
}

std::string Describe(const Token& token) {
    switch (token.kind) {
    case Token::Kind::end:
        return "the file ends here";
    case Token::Kind::text:
        return "the text \"" + token.text + "\" stands here";
    default:
        return "'" + token.text + "' stands here";
    }
}

} // namespace

Scanner::Scanner(std::string file, std::string fileSource, const Definitions& someDefinitions)
    : source(std::move(fileSource)), definitions(someDefinitions), place{std::move(file), 1} {
    CheckUTF8(place.file, source);
    Advance();
}

Token Scanner::Take() {
    Token taken = next;
    Advance();
    return taken;
}

bool Scanner::TakeIf(const std::string& text) {
    const bool matches =
        (next.kind == Token::Kind::word || next.kind == Token::Kind::brace) && next.text == text;
    if (matches) Advance();
    return matches;
}

void Scanner::Expect(const std::string& text) {
    if (!TakeIf(text)) Refuse("'" + text + "'");
}

Token Scanner::TakeWord(const std::string& what) {
    if (next.kind != Token::Kind::word) Refuse(what);
    return Take();
}

int Scanner::TakeNumber(const std::string& what, int least, int most) {
    if (next.kind != Token::Kind::number || next.value < least || next.value > most)
        Refuse(what + " from " + std::to_string(least) + " to " + std::to_string(most));
    return Take().value;
}

std::string Scanner::TakeText(const std::string& what) {
    if (next.kind != Token::Kind::text) Refuse(what + " in double quotes");
    if (next.text.size() > 255)
        throw SourceError(next.place, "the text has " + std::to_string(next.text.size()) +
                                          " bytes, expected at most 255");
    return Take().text;
}

void Scanner::Refuse(const std::string& what) const {
    throw SourceError(next.place, Describe(next) + ", expected " + what);
}

void Scanner::Advance() {
    SkipBlanks();
    next = {Token::Kind::end, "", 0, place};
    if (position == source.size()) return;
    const char first = source[position];
    if (first == '"') return ReadText();
    if (first == '-' || IsDigit(first)) return ReadNumber();
    std::size_t end = position;
    if (first == '{' || first == '}') {
        next.kind = Token::Kind::brace;
        ++end;
    } else {
        next.kind = Token::Kind::word;
        while (end < source.size() && IsLetter(source[end])) ++end;
    }
    if (end == position) {
        const std::string character = source.substr(position, CharacterLength(source, position));
        throw SourceError(place, "the character '" + character +
                                     "' stands here, expected a word, a number, a text in double "
                                     "quotes or a brace");
    }
    next.text = source.substr(position, end - position);
    position = end;
}

void Scanner::SkipBlanks() {
    bool inComment = false;
    for (; position < source.size(); ++position) {
        const char c = source[position];
        if (c == '\n') {
            ++place.line;
            inComment = false;
        } else if (c == '#') {
            inComment = true;
        } else if (!inComment && c != ' ' && c != '\t' && c != '\r') {
            return;
        }
    }
}

void Scanner::ReadNumber() {
    next.kind = Token::Kind::number;
    const char* const first = source.data() + position;
    const char* const last = source.data() + source.size();
    const auto [end, error] = std::from_chars(first, last, next.value);
    next.text.assign(first, std::max(end, first + 1));
    if (error != std::errc() || (end != last && IsLetter(*end)))
        throw SourceError(place, "'" + next.text +
                                     "' begins something that is no number, "
                                     "expected a whole decimal number");
    position = static_cast<std::size_t>(end - source.data());
}

void Scanner::ReadText() {
    next.kind = Token::Kind::text;
    for (++position; position < source.size() && source[position] != '\n';) {
        const char c = source[position++];
        if (c == '"') return;
        if (c == '\\')
            next.text += ReadEscape();
        else if (c == '$' && position < source.size() && source[position] == '{')
            next.text += ReadDefinition();
        else
            next.text += c;
    }
    throw SourceError(place, "the line ends inside a text, expected its closing double quote");
}

std::string Scanner::ReadEscape() {
    const char c = position < source.size() ? source[position++] : '\n';
    if (c == 'n') return "\n";
    if (c == '"' || c == '\\') return {c};
    throw SourceError(place, "a backslash stands before something else than \", \\ or n, expected "
                             "one of these");
}

std::string Scanner::ReadDefinition() {
    const std::size_t end = std::min(source.find_first_of("}\n\"", position), source.size());
    const std::string name = source.substr(position + 1, end - position - 1);
    const auto found = definitions.find(name);
    if (found == definitions.end() || end == source.size() || source[end] != '}')
        throw SourceError(place, "${" + name +
                                     "} stands for nothing, expected a name defined with "
                                     "-D NAME=TEXT");
    position = end + 1;
    return found->second;
}

} // namespace gif89
