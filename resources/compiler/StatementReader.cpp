#include "StatementReader.h"

#include "Palette.h"
#include "Picture.h"

#include <filesystem>
#include <limits>

namespace gif89 {

namespace {

constexpr int kMostPoints = std::numeric_limits<std::int16_t>::max();

/// The text being read and what becomes of it.
struct Reading {
    Scanner& scanner;
    ResourceFile& resources;
    std::vector<Reference>& references;
};

// strings ID { "..." "..." }
void ReadStrings(const Reading& reading, const Place& place) {
    const std::int16_t id = reading.scanner.TakeID();
    Bytes strings;
    int count = 0;
    reading.scanner.Expect("{");
    for (; !reading.scanner.TakeIf("}"); ++count)
        PutString(strings, reading.scanner.TakeText("a string or '}'"));
    if (count > kMostPoints)
        throw SourceError(place, "the list is too long, expected 32767 strings at most");
    Bytes list;
    PutWord(list, count);
    PutBytes(list, strings);
    reading.resources.Add(FourCC("STR#"), id, list, place);
}

// dialog ID "title" size WIDTH HEIGHT { items }
void ReadDialog(const Reading& reading, const Place& place) {
    constexpr int kMovableModal = 5;
    const std::int16_t id = reading.scanner.TakeID();
    const std::string title = reading.scanner.TakeText("a title");
    Bytes dialog;
    PutRect(dialog, ReadSize(reading.scanner, 0, 0));
    PutWord(dialog, kMovableModal);
    PutWord(dialog, 0);  // invisible until its owner has set it up
    PutWord(dialog, 0);  // no close box
    PutLong(dialog, 0);  // reference constant
    PutWord(dialog, id); // its item list
    PutString(dialog, title);
    reading.resources.Add(FourCC("DLOG"), id, dialog, place);
    ReadItems(reading.scanner, id, reading.resources, reading.references);
}

// alert ID size WIDTH HEIGHT { items }
void ReadAlert(const Reading& reading, const Place& place) {
    constexpr int kShowOnceBeepOnce = 0x5555; // in each of the four stages; item 1 is the default
    const std::int16_t id = reading.scanner.TakeID();
    Bytes alert;
    PutRect(alert, ReadSize(reading.scanner, 0, 0));
    PutWord(alert, id); // its item list
    PutWord(alert, kShowOnceBeepOnce);
    reading.resources.Add(FourCC("ALRT"), id, alert, place);
    ReadItems(reading.scanner, id, reading.resources, reading.references);
}

// control ID "title" at LEFT TOP size WIDTH HEIGHT value VALUE min LEAST max MOST kind KIND
void ReadControl(const Reading& reading, const Place& place) {
    Scanner& scanner = reading.scanner;
    const std::int16_t id = scanner.TakeID();
    ControlTemplate control;
    control.title = scanner.TakeText("a title");
    control.bounds = ReadBounds(scanner);
    const std::pair<const char*, int*> fields[] = {{"value", &control.value},
                                                   {"min", &control.minimum},
                                                   {"max", &control.maximum},
                                                   {"kind", &control.kind}};
    for (const auto& [word, field] : fields) {
        scanner.Expect(word);
        *field = scanner.TakeNumber("a number", -32768, 32767);
    }
    reading.resources.Add(FourCC("CNTL"), id, WriteControl(control), place);
}

// menu ID "title" { "entry" "entry" disabled separator }
void ReadMenu(const Reading& reading, const Place& place) {
    constexpr int kMostSwitchable = 31; // one bit each beside the bit of the whole menu
    const std::int16_t id = reading.scanner.TakeID();
    const std::string title = reading.scanner.TakeText("a title");
    Bytes entries;
    std::uint32_t enabled = 0xFFFFFFFF;
    reading.scanner.Expect("{");
    for (int entry = 1; !reading.scanner.TakeIf("}"); ++entry) {
        const Place entryPlace = reading.scanner.Peek().place;
        const bool isSeparator = reading.scanner.TakeIf("separator");
        PutString(entries,
                  isSeparator ? "-" : reading.scanner.TakeText("'separator', '}' or an entry"));
        PutLong(entries, 0); // icon, command key, mark, style
        if (!isSeparator && !reading.scanner.TakeIf("disabled")) continue;
        if (entry > kMostSwitchable)
            throw SourceError(entryPlace, "entry " + std::to_string(entry) +
                                              " is disabled, expected only entries up to 31 to be");
        enabled &= ~(1U << entry);
    }
    Bytes menu;
    PutWord(menu, id);
    PutLong(menu, 0); // width and height, found when it is shown
    PutLong(menu, 0); // definition procedure: the standard one
    PutLong(menu, enabled);
    PutString(menu, title);
    PutBytes(menu, entries);
    PutByte(menu, 0); // ends the entries
    reading.resources.Add(FourCC("MENU"), id, menu, place);
}

// cursor ID hotspot LEFT TOP { 16 rows of 16 characters: '#' black, 'o' white, '.' see-through }
void ReadCursor(const Reading& reading, const Place& place) {
    constexpr std::size_t kSide = 16;
    const std::int16_t id = reading.scanner.TakeID();
    reading.scanner.Expect("hotspot");
    const int left = reading.scanner.TakeNumber("a column", 0, kSide - 1);
    const int top = reading.scanner.TakeNumber("a row", 0, kSide - 1);
    Bytes data, mask;
    reading.scanner.Expect("{");
    for (std::size_t row = 0; row < kSide; ++row) {
        const Place rowPlace = reading.scanner.Peek().place;
        const std::string pixels = reading.scanner.TakeText("a row of the cursor");
        if (pixels.size() != kSide || pixels.find_first_not_of("#o.") != std::string::npos)
            throw SourceError(rowPlace, "the row is \"" + pixels +
                                            "\", expected 16 characters, each '#', 'o' or '.'");
        int black = 0, opaque = 0;
        for (const char pixel : pixels) {
            black = black << 1 | (pixel == '#');
            opaque = opaque << 1 | (pixel != '.');
        }
        PutWord(data, black);
        PutWord(mask, opaque);
    }
    reading.scanner.Expect("}");
    PutBytes(data, mask);
    PutWord(data, top);
    PutWord(data, left);
    reading.resources.Add(FourCC("CURS"), id, data, place);
}

// picture ID "file.png" size WIDTH HEIGHT
void ReadPicture(const Reading& reading, const Place& place) {
    const std::int16_t id = reading.scanner.TakeID();
    const Token file = reading.scanner.Peek();
    const std::string name = reading.scanner.TakeText("the name of a PNG file");
    const std::string path = (std::filesystem::path(place.file).parent_path() / name).string();
    const Rect frame = ReadSize(reading.scanner, 0, 0);
    reading.resources.Add(FourCC("PICT"), id, ConvertPicture(path, frame, file.place), place);
}

// palette ID { rules }
void ReadPalette(const Reading& reading, const Place& place) {
    const std::int16_t id = reading.scanner.TakeID();
    reading.resources.Add(FourCC("PLUT"), id, ReadPaletteRules(reading.scanner, place), place);
}

int HexValue(char digit) {
    return digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10;
}

// bytes "TYPE" ID { "00 FF ..." }
void ReadBytes(const Reading& reading, const Place& place) {
    Scanner& scanner = reading.scanner;
    const std::string type = scanner.TakeText("a type");
    if (type.size() != 4)
        throw SourceError(place, "the type is \"" + type + "\", expected four characters");
    const std::int16_t id = scanner.TakeID();
    Bytes bytes;
    scanner.Expect("{");
    while (!scanner.TakeIf("}")) {
        const Place rowPlace = scanner.Peek().place;
        std::string digits = scanner.TakeText("a row of bytes or '}'");
        std::erase(digits, ' ');
        if (digits.size() % 2 != 0 ||
            digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
            throw SourceError(rowPlace, "the row is no list of bytes, expected two hexadecimal "
                                        "digits for each");
        for (std::size_t i = 0; i < digits.size(); i += 2)
            PutByte(bytes, HexValue(digits[i]) << 4 | HexValue(digits[i + 1]));
    }
    OSType code = 0;
    for (const char c : type) code = code << 8 | static_cast<std::uint8_t>(c);
    reading.resources.Add(code, id, bytes, place);
}

constexpr struct {
    const char* word;
    void (*read)(const Reading& reading, const Place& place);
} kStatements[] = {
    {"strings", ReadStrings}, {"dialog", ReadDialog},   {"alert", ReadAlert},
    {"control", ReadControl}, {"menu", ReadMenu},       {"cursor", ReadCursor},
    {"picture", ReadPicture}, {"palette", ReadPalette}, {"bytes", ReadBytes},
};

void ReadStatement(const Reading& reading) {
    const Place place = reading.scanner.Peek().place;
    for (const auto& statement : kStatements)
        if (reading.scanner.TakeIf(statement.word)) return statement.read(reading, place);
    reading.scanner.Refuse(OneOf(kStatements));
}

} // namespace

void ReadStatements(Scanner& scanner, ResourceFile& resources, std::vector<Reference>& references) {
    while (!scanner.AtEnd()) ReadStatement({scanner, resources, references});
}

Rect ReadSize(Scanner& scanner, std::int16_t left, std::int16_t top) {
    scanner.Expect("size");
    const int width = scanner.TakeNumber("a width", 1, kMostPoints - left);
    const int height = scanner.TakeNumber("a height", 1, kMostPoints - top);
    return {top, left, static_cast<std::int16_t>(top + height),
            static_cast<std::int16_t>(left + width)};
}

Rect ReadBounds(Scanner& scanner) {
    scanner.Expect("at");
    const int left = scanner.TakeNumber("a left side", 0, kMostPoints - 1);
    const int top = scanner.TakeNumber("a top side", 0, kMostPoints - 1);
    return ReadSize(scanner, static_cast<std::int16_t>(left), static_cast<std::int16_t>(top));
}

Bytes WriteControl(const ControlTemplate& control) {
    constexpr int kVisible = 0x0100; // a byte and its filler
    Bytes bytes;
    PutRect(bytes, control.bounds);
    PutWord(bytes, control.value);
    PutWord(bytes, kVisible);
    PutWord(bytes, control.maximum);
    PutWord(bytes, control.minimum);
    PutWord(bytes, control.kind);
    PutLong(bytes, 0); // reference constant
    PutString(bytes, control.title);
    return bytes;
}

} // namespace gif89
