// Cuts a resource text into words, numbers, texts in double quotes and braces.
#pragma once

#include "SourceError.h"

#include <cstdint>
#include <map>
#include <string>

namespace gif89 {

/// Names and the texts that stand for them: "${NAME}" in a quoted text.
using Definitions = std::map<std::string, std::string>;

struct Token {
    enum class Kind : std::uint8_t { word, number, text, brace, end };
    Kind kind = Kind::end;
    std::string text; ///< as written; for a quoted text its contents
    int value = 0;    ///< of a number
    Place place;
};

/// Reads one file's tokens in order. Every function throws SourceError at what it cannot accept;
/// `what` is the phrase that such an error names as expected.
class Scanner {
  public:
    /// @param source UTF-8; refused where it is not
    Scanner(std::string file, std::string source, const Definitions& definitions);

    const Token& Peek() const { return next; }
    Token Take();

    bool AtEnd() const { return next.kind == Token::Kind::end; }
    bool NextIsText() const { return next.kind == Token::Kind::text; }
    bool NextIsNumber() const { return next.kind == Token::Kind::number; }

    /// Takes the next token if it is this word or brace.
    bool TakeIf(const std::string& text);
    void Expect(const std::string& text);

    Token TakeWord(const std::string& what);
    int TakeNumber(const std::string& what, int least, int most);
    std::int16_t TakeID() {
        return static_cast<std::int16_t>(TakeNumber("a resource id", -32768, 32767));
    }
    /// A text of at most 255 bytes, the most that a length byte can count.
    std::string TakeText(const std::string& what);

    /// Refuses the next token.
    [[noreturn]] void Refuse(const std::string& what) const;

  private:
    void Advance();
    void SkipBlanks();
    void ReadNumber();
    void ReadText();
    std::string ReadEscape();
    std::string ReadDefinition();

    std::string source;
    const Definitions& definitions;
    std::size_t position = 0;
    Place place;
    Token next;
};

} // namespace gif89
