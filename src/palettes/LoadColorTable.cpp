#include "LoadColorTable.h"

#include "BigEndian.h"
#include "StandardFile.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kMostColors = 256;
constexpr short kSwatchVersion = 1;
constexpr short kRgbSpace = 0;

OSErr Skip(short refNum, std::int32_t count) {
    return SetFPos(refNum, fsFromMark, count);
}

OSErr ExpectSignature(short refNum, OSType expected) {
    std::uint8_t bytes[4];
    if (const OSErr error = DoRead(refNum, sizeof bytes, bytes)) return error;
    return GetBE<OSType>(bytes) == expected ? OSErr{noErr} : OSErr{kNotAPaletteFile};
}

OSErr ReadSwatchCount(short refNum, int* colors) {
    short word = 0;
    if (const OSErr error = DoReadWord(refNum, &word)) return error; // version
    if (word != kSwatchVersion) return kNotAPaletteFile;
    if (const OSErr error = DoReadWord(refNum, &word)) return error; // count
    *colors = std::clamp<int>(word, 0, kMostColors);
    return noErr;
}

OSErr ReadSwatch(short refNum, RGBtuple* color) {
    short space = 0, components[4];
    if (const OSErr error = DoReadWord(refNum, &space)) return error;
    if (space != kRgbSpace) return kColorSpaceNotSupported;
    for (short& component : components) // red, green, blue, and one that RGB leaves unused
        if (const OSErr error = DoReadWord(refNum, &component)) return error;
    // Deliberate: the low bytes. Swatches store a level v as v x 257, whose two bytes are equal.
    const auto level = [&](int i) { return static_cast<std::uint8_t>(components[i]); };
    *color = {0, level(0), level(1), level(2)};
    return noErr;
}

OSErr ReadRiffCount(short refNum, int* colors) {
    if (const OSErr error = ExpectSignature(refNum, FourCC("RIFF"))) return error;
    if (const OSErr error = Skip(refNum, 4)) return error; // RIFF length
    if (const OSErr error = ExpectSignature(refNum, FourCC("PAL "))) return error;
    if (const OSErr error = Skip(refNum, 10)) return error; // "data", its length, palette version
    std::uint8_t bytes[2];
    if (const OSErr error = DoRead(refNum, sizeof bytes, bytes)) return error;
    *colors = std::min(bytes[0] | bytes[1] << 8, kMostColors); // this format is little-endian
    return noErr;
}

OSErr ReadRiffColor(short refNum, RGBtuple* color) {
    std::uint8_t bytes[4]; // red, green, blue, flags
    if (const OSErr error = DoRead(refNum, sizeof bytes, bytes)) return error;
    *color = {0, bytes[0], bytes[1], bytes[2]};
    return noErr;
}

using CountReader = OSErr (*)(short refNum, int* colors);
using ColorReader = OSErr (*)(short refNum, RGBtuple* color);

OSErr LoadCounted(short refNum, CountReader readCount, ColorReader readColor, RGBLookUpTable* table,
                  std::int32_t* count) {
    int colors = 0;
    if (const OSErr error = readCount(refNum, &colors)) return error;
    RGBLookUpTable loaded = {};
    for (int i = 0; i < colors; ++i) {
        RGBtuple color;
        if (const OSErr error = readColor(refNum, &color)) return error;
        SetTableEntry(loaded, i, color);
    }
    *table = loaded;
    *count = colors;
    return noErr;
}

OSErr LoadByType(short refNum, OSType type, RGBLookUpTable* table, std::int32_t* count) {
    switch (type) {
    case kSwatchFileType:
        return LoadColorsAsTable(refNum, table, count);
    case kRiffPaletteFileType:
        return LoadMicrosoftPalette(refNum, table, count);
    default:
        return LoadTableFile(refNum, table, count);
    }
}

} // namespace

OSErr DoRead(short refNum, std::int32_t count, void* buffer) {
    std::int32_t got = count;
    if (const OSErr error = FSRead(refNum, &got, buffer)) return error;
    return got == count ? OSErr{noErr} : OSErr{eofErr};
}

OSErr DoReadWord(short refNum, short* word) {
    std::uint8_t bytes[2];
    if (const OSErr error = DoRead(refNum, sizeof bytes, bytes)) return error;
    *word = GetBE<std::int16_t>(bytes);
    return noErr;
}

OSErr LoadColorsAsTable(short refNum, RGBLookUpTable* table, std::int32_t* count) {
    return LoadCounted(refNum, ReadSwatchCount, ReadSwatch, table, count);
}

OSErr LoadTableFile(short refNum, RGBLookUpTable* table, std::int32_t* count) {
    std::uint8_t triples[kMostColors][3];
    if (const OSErr error = DoRead(refNum, sizeof triples, triples)) return error;
    for (int i = 0; i < kMostColors; ++i)
        SetTableEntry(*table, i, {0, triples[i][0], triples[i][1], triples[i][2]});
    *count = kMostColors;
    return noErr;
}

OSErr LoadMicrosoftPalette(short refNum, RGBLookUpTable* table, std::int32_t* count) {
    return LoadCounted(refNum, ReadRiffCount, ReadRiffColor, table, count);
}

Boolean IsPaletteFile(const OSType* type, const unsigned char* name) {
    static constexpr OSType kTypes[] = {kSwatchFileType, kTableFileType, kRiffPaletteFileType};
    static constexpr const char* kExtensions[] = {"ZCO", "ZCT", "PAL"};
    if (std::find(std::begin(kTypes), std::end(kTypes), *type) != std::end(kTypes)) return 1;

    int dot = name[0];
    while (dot >= 1 && name[dot] != '.') --dot;
    if (dot == 0) return 0;
    // Deliberate: only as many characters as the name has are compared, so that the beginning of an
    // extension, even an empty one, is enough. A file whose name an old file system has cut off is
    // still shown.
    const auto length = static_cast<std::size_t>(name[0] - dot);
    const auto* extension = reinterpret_cast<const char*>(name + dot + 1);
    return std::any_of(std::begin(kExtensions), std::end(kExtensions), [&](const char* known) {
        return std::strncmp(extension, known, length) == 0;
    });
}

Boolean LoadPaletteFileFilter(ParamBlockRec* file) {
    if (file->fdFlags & kIsInvisible) return 1;
    if (file->ioFlAttrib & kIsDirectory) return 0;
    static constexpr unsigned char kNoName[] = {0};
    return !IsPaletteFile(&file->fdType, file->ioNamePtr ? file->ioNamePtr : kNoName);
}

Boolean GetColorTableFile(FSSpec* file, OSType* type) {
    StandardFileReply reply;
    StandardGetFile(LoadPaletteFileFilter, -1, nullptr, &reply);
    if (!reply.sfGood) return 0;
    *file = reply.sfFile;
    *type = reply.sfType;
    return 1;
}

OSErr LoadColorTable(RGBLookUpTable* table, std::int32_t* count, const FSSpec* file, OSType type) {
    std::int16_t refNum = 0;
    // Deliberate: when the file cannot be opened, the present palette stays and no error is told.
    // The user chose the file a moment ago, so this is rare.
    if (FSpOpenDF(file, fsRdPerm, &refNum) != noErr) return noErr;
    const OSErr error = LoadByType(refNum, type, table, count);
    FSClose(refNum);
    return error;
}
