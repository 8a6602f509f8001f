#include "ReadTextPalette.h"

#include "PaletteBytes.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>

namespace gif89 {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";

void SkipBlanks(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
}

/// Up to the first of the separators, without it.
std::string_view TakeUntil(std::string_view& text, std::string_view separators) {
    const std::string_view taken = text.substr(0, text.find_first_of(separators));
    text.remove_prefix(taken.size());
    return taken;
}

/// A number of decimal digits alone, up to a blank or the end.
std::optional<int> TakeNumber(std::string_view& line, int most) {
    SkipBlanks(line);
    const std::string_view digits = TakeUntil(line, kBlanks);
    int number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [last, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || last != end || number < 0 || number > most) return std::nullopt;
    return number;
}

/// Three numbers; what follows stays in the line.
std::optional<Color> TakeDecimalColor(std::string_view& line) {
    std::uint8_t levels[3];
    for (std::uint8_t& level : levels) {
        const auto number = TakeNumber(line, 255);
        if (!number) return std::nullopt;
        level = static_cast<std::uint8_t>(*number);
    }
    return Color{levels[0], levels[1], levels[2]};
}

std::optional<Color> ParseHexColor(std::string_view digits) {
    constexpr std::size_t kDigits = 6, kDigitsWithOpacity = 8;
    if (digits.starts_with('#'))
        digits.remove_prefix(1);
    else if (digits.size() == kDigitsWithOpacity)
        digits.remove_prefix(kDigitsWithOpacity - kDigits);
    std::uint32_t packed = 0;
    const char* const end = digits.data() + digits.size();
    const auto [last, error] = std::from_chars(digits.data(), end, packed, 16);
    if (digits.size() != kDigits || error != std::errc() || last != end) return std::nullopt;
    return Color::Unpack(packed);
}

/// The lines of a text, one after another.
class Lines {
  public:
    Lines(std::string_view text, const GrowingPalette& target) : rest(text), palette(target) {}

    bool AtEnd() const { return rest.empty(); }

    /// The next line, without the blanks around it; empty at the end.
    std::string_view Next() {
        ++number;
        std::string_view line = TakeUntil(rest, "\r\n");
        rest.remove_prefix(rest.starts_with("\r\n") ? 2 : rest.empty() ? 0 : 1);
        SkipBlanks(line);
        return line.substr(0, line.find_last_not_of(kBlanks) + 1);
    }

    /// Says what should have stood in the line that was taken last.
    [[noreturn]] void Fail(std::string_view found, const std::string& expected) const {
        constexpr std::size_t kShown = 40;
        std::string shown(found.substr(0, kShown));
        std::replace_if(
            shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
        palette.Fail("line " + std::to_string(number) + " is \"" + shown + "\"; " + expected +
                     " is expected");
    }

  private:
    std::string_view rest;
    const GrowingPalette& palette;
    int number = 0;
};

constexpr char kThreeLevels[] = "red, green and blue of 0 to 255";

bool IsHeader(std::string_view line) {
    constexpr std::string_view kFields[] = {"Name:", "Columns:", "Channels:"};
    return std::any_of(std::begin(kFields), std::end(kFields),
                       [line](std::string_view field) { return line.starts_with(field); });
}

} // namespace

Palette ReadGimpPalette(std::string_view text) {
    GrowingPalette palette("a GIMP palette");
    Lines lines(text, palette);
    lines.Next(); // "GIMP Palette"
    while (!lines.AtEnd()) {
        const std::string_view line = lines.Next();
        if (line.empty() || line.starts_with('#') || IsHeader(line)) continue;
        std::string_view rest = line;
        const auto color = TakeDecimalColor(rest); // the name follows
        if (!color) lines.Fail(line, kThreeLevels);
        palette.Add(*color);
    }
    return palette.Finish();
}

Palette ReadJascPalette(std::string_view text) {
    GrowingPalette palette("a JASC palette");
    Lines lines(text, palette);
    lines.Next(); // "JASC-PAL"
    if (const auto version = lines.Next(); version != "0100") lines.Fail(version, "version 0100");
    std::string_view line = lines.Next(), rest = line;
    const auto count = TakeNumber(rest, kMostEntries);
    if (!count || !rest.empty()) lines.Fail(line, "a number of colours up to 256");
    for (int i = 0; i < *count; ++i) {
        line = rest = lines.Next();
        const auto color = TakeDecimalColor(rest);
        if (!color || !rest.empty()) lines.Fail(line, kThreeLevels);
        palette.Add(*color);
    }
    while (!lines.AtEnd())
        if (line = lines.Next(); !line.empty()) lines.Fail(line, "nothing more");
    return palette.Finish();
}

Palette ReadHexPalette(std::string_view text) {
    constexpr std::string_view kSeparators = " \t\v\f,";
    GrowingPalette palette("a hexadecimal palette");
    Lines lines(text, palette);
    while (!lines.AtEnd()) {
        std::string_view line = lines.Next();
        line = TakeUntil(line, ";");
        while (!line.empty()) {
            const std::string_view word = TakeUntil(line, kSeparators);
            line.remove_prefix(std::min(line.find_first_not_of(kSeparators), line.size()));
            if (word.empty()) continue;
            const auto color = ParseHexColor(word);
            if (!color) lines.Fail(word, "a colour of six hexadecimal digits");
            palette.Add(*color);
        }
    }
    return palette.Finish();
}

} // namespace gif89
