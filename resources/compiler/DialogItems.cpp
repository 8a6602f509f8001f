// The items of dialogs and alerts: each a line "NUMBER KIND ... at LEFT TOP size WIDTH HEIGHT".
#include "StatementReader.h"

namespace gif89 {

namespace {

enum class Payload : std::uint8_t { none, text, id };

constexpr int kControlItem = 7;
constexpr int kDisabledItem = 128;

constexpr struct ItemKind {
    const char* word;
    int code; ///< as item lists store it
    Payload payload;
    OSType referred; ///< type of the resource that the id names
} kItemKinds[] = {
    {"button", 4, Payload::text, 0},
    {"check", 5, Payload::text, 0},
    {"radio", 6, Payload::text, 0},
    {"static", 8, Payload::text, 0},
    {"edit", 16, Payload::text, 0},
    {"user", 0, Payload::none, 0},
    {"control", kControlItem, Payload::id, FourCC("CNTL")},
    {"popup", kControlItem, Payload::id, FourCC("MENU")},
    {"picture", 64, Payload::id, FourCC("PICT")},
};

const ItemKind& ReadKind(Scanner& scanner) {
    for (const ItemKind& kind : kItemKinds)
        if (scanner.TakeIf(kind.word)) return kind;
    scanner.Refuse(OneOf(kItemKinds));
}

// A pop-up's control carries its menu's id in the minimum, and has that id itself.
Bytes WritePopUp(std::int16_t menu, const Rect& bounds) {
    constexpr int kPopUpMenu = 1008;
    return WriteControl({bounds, 0, menu, 0, kPopUpMenu, ""});
}

void ReadItem(Scanner& scanner, int number, Bytes& list, ResourceFile& resources,
              std::vector<Reference>& references) {
    const Place place = scanner.Peek().place;
    if (const int stated = scanner.TakeNumber("an item number or '}',", 1, 32767); stated != number)
        throw SourceError(place, "the item's number is " + std::to_string(stated) + ", expected " +
                                     std::to_string(number));
    const ItemKind& kind = ReadKind(scanner);
    Bytes payload;
    std::int16_t id = 0;
    if (kind.payload == Payload::text) {
        PutString(payload, scanner.TakeText("the item's text"));
    } else if (kind.payload == Payload::id) {
        id = scanner.TakeID();
        references.push_back({kind.referred, id, place});
        PutByte(payload, 2);
        PutWord(payload, id);
    } else {
        PutByte(payload, 0);
    }
    const Rect bounds = ReadBounds(scanner);
    if (kind.referred == FourCC("MENU"))
        resources.Add(FourCC("CNTL"), id, WritePopUp(id, bounds), place);

    PutLong(list, 0); // handle or procedure, when in memory
    PutRect(list, bounds);
    PutByte(list, kind.code | (scanner.TakeIf("disabled") ? kDisabledItem : 0));
    PutBytes(list, payload);
    PadToEven(list);
}

} // namespace

void ReadItems(Scanner& scanner, std::int16_t id, ResourceFile& resources,
               std::vector<Reference>& references) {
    const Place place = scanner.Peek().place;
    scanner.Expect("{");
    Bytes items;
    int count = 0;
    while (!scanner.TakeIf("}")) ReadItem(scanner, ++count, items, resources, references);
    Bytes list;
    PutWord(list, count - 1);
    PutBytes(list, items);
    resources.Add(FourCC("DITL"), id, list, place);
}

} // namespace gif89
