// Palette files written byte by byte, whole and damaged, and which files are offered.
#include "LoadColorTable.h"

#include "PascalStrings.h"
#include "ResourceBytes.h"
#include "TemporaryFolder.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

std::string Bytes(std::initializer_list<int> values) {
    return {values.begin(), values.end()};
}

RGBtuple ColorOf(int i) {
    const auto level = [](int value) { return static_cast<std::uint8_t>(value); };
    return {0, level(i + 1), level(3 * i + 2), level(255 - i)};
}

// High and low bytes of the components differ, and the fourth word is not 0.
std::string Swatches(std::size_t count, int stored, std::size_t version = 1,
                     std::size_t space = 0) {
    std::string file = Word(version) + Word(count);
    for (int i = 0; i < stored; ++i) {
        const RGBtuple c = ColorOf(i);
        file += Word(space) + Bytes({0xEE, c.red, 0xDD, c.green, 0xCC, c.blue, 0xAB, 0xCD});
    }
    return file;
}

std::string Triples() {
    std::string file;
    for (int i = 0; i < 256; ++i) {
        const RGBtuple c = ColorOf(i);
        file += Bytes({c.red, c.green, c.blue});
    }
    return file;
}

std::string Riff(int count, int stored) {
    std::string file = "RIFF" + Bytes({9, 9, 9, 9}) + "PAL data" + Bytes({8, 8, 8, 8, 0, 3}) +
                       Bytes({count & 255, count >> 8 & 255});
    for (int i = 0; i < stored; ++i) {
        const RGBtuple c = ColorOf(i);
        file += Bytes({c.red, c.green, c.blue, 0x77});
    }
    return file;
}

RGBLookUpTable Marked() {
    RGBLookUpTable marked;
    std::memset(&marked, 0x5A, sizeof marked);
    return marked;
}

struct Loaded {
    OSErr error = 1;
    std::int32_t count = 4711;
    RGBLookUpTable table = Marked();

    bool HasTable(const RGBLookUpTable& wanted) const {
        return std::memcmp(&table, &wanted, sizeof table) == 0;
    }
    bool Untouched() const { return count == 4711 && HasTable(Marked()); }
    bool Holds(int colors) const {
        RGBLookUpTable wanted = {};
        for (int i = 0; i < colors; ++i) SetTableEntry(wanted, i, ColorOf(i));
        return HasTable(wanted);
    }
};

Loaded Load(const std::string& path, OSType type) {
    Loaded loaded;
    FSSpec spec;
    EXPECT_EQ(PathToFSSpec(path, &spec), noErr);
    loaded.error = LoadColorTable(&loaded.table, &loaded.count, &spec, type);
    return loaded;
}

Loaded LoadBytes(const std::string& bytes, OSType type) {
    const TemporaryFolder folder;
    return Load(folder.Write("palette", bytes), type);
}

constexpr OSType kUnknownType = FourCC("TEXT");

struct PaletteFile {
    const char* name;
    std::string bytes;
    OSType type;
    int colors;
};

TEST(LoadColorTable, ReadsTheColorsAndBlackensTheRest) {
    const PaletteFile cases[] = {
        {"swatches with more behind", Swatches(7, 9), kSwatchFileType, 7},
        {"more swatches than a palette holds", Swatches(300, 256), kSwatchFileType, 256},
        {"no swatches", Swatches(0, 0), kSwatchFileType, 0},
        {"a negative count", Swatches(0xFFFF, 0), kSwatchFileType, 0},
        {"triples of an unknown type", Triples(), kUnknownType, 256},
        {"riff", Riff(16, 17), kRiffPaletteFileType, 16},
        {"a riff count with its top bit set", Riff(0xFFFF, 256), kRiffPaletteFileType, 256},
    };
    for (const auto& c : cases) {
        const Loaded loaded = LoadBytes(c.bytes, c.type);
        EXPECT_EQ(loaded.error, noErr) << c.name;
        EXPECT_EQ(loaded.count, c.colors) << c.name;
        EXPECT_TRUE(loaded.Holds(c.colors)) << c.name;
    }
}

TEST(LoadColorTable, RefusesWhatIsNoSuchPaletteAsSoonAsItsBytesAreThere) {
    const struct {
        const char* name;
        std::string bytes;
        OSType type;
        OSErr error;
    } cases[] = {
        {"swatch version 0", Swatches(3, 3, 0), kSwatchFileType, -1},
        {"swatch version 2, nothing else", Word(2), kSwatchFileType, -1},
        {"colour space 1", Swatches(3, 3, 1, 1), kSwatchFileType, -2},
        {"the last colour space", Swatches(3, 2) + Word(7), kSwatchFileType, -2},
        {"a version before a space", Swatches(3, 3, 256, 256), kSwatchFileType, -1},
        {"no RIFF", "RIFX", kRiffPaletteFileType, -1},
        {"another form", "RIFF1234PAL!", kRiffPaletteFileType, -1},
    };
    for (const auto& c : cases) {
        const Loaded loaded = LoadBytes(c.bytes, c.type);
        EXPECT_EQ(loaded.error, c.error) << c.name;
        EXPECT_TRUE(loaded.Untouched()) << c.name;
    }
}

TEST(LoadColorTable, ReportsEveryLengthThatIsTooShort) {
    const TemporaryFolder folder;
    for (const PaletteFile& valid : {PaletteFile{"swatches", Swatches(5, 5), kSwatchFileType, 5},
                                     {"triples", Triples(), kTableFileType, 256},
                                     {"riff", Riff(6, 6), kRiffPaletteFileType, 6}}) {
        for (std::size_t length = 0; length < valid.bytes.size(); ++length) {
            const Loaded loaded =
                Load(folder.Write("palette", valid.bytes.substr(0, length)), valid.type);
            EXPECT_EQ(loaded.error, eofErr) << valid.name << " of " << length << " bytes";
            EXPECT_TRUE(loaded.Untouched()) << valid.name << " of " << length << " bytes";
        }
        EXPECT_EQ(Load(folder.Write("palette", valid.bytes), valid.type).count, valid.colors);
    }
}

const std::tuple<OSType, std::string, bool> kNames[] = {
    {kSwatchFileType, "x", true},      {kTableFileType, "x.png", true},
    {kRiffPaletteFileType, "", true},  {FourCC("pal "), "x", false},
    {kUnknownType, "x.ZCO", true},     {kUnknownType, "x.ZCT", true},
    {kUnknownType, "a.png.PAL", true}, {kUnknownType, "a.PAL.png", false},
    {kUnknownType, "x.pal", false},    {kUnknownType, "x.P", true},
    {kUnknownType, "x.CO", false},     {kUnknownType, "x.", true},
    {kUnknownType, "x.ZCOX", false},   {kUnknownType, "ZCO", false},
};

TEST(PaletteFileFilter, ShowsPaletteFilesByTypeOrExtension) {
    for (const auto& [type, name, isPalette] : kNames) {
        Str255 string;
        ToPascal(name + "ZCO", string);
        string[0] = static_cast<std::uint8_t>(name.size()); // what lies behind it must not count
        ParamBlockRec block;
        block.ioNamePtr = string;
        block.fdType = type;
        EXPECT_EQ(IsPaletteFile(&block.fdType, string) != 0, isPalette) << name;
        EXPECT_EQ(LoadPaletteFileFilter(&block) == 0, isPalette) << name;
        block.fdFlags = kIsInvisible;
        EXPECT_TRUE(LoadPaletteFileFilter(&block)) << name << ", invisible";
        block.ioFlAttrib = kIsDirectory;
        EXPECT_TRUE(LoadPaletteFileFilter(&block)) << name << ", invisible folder";
        block.fdFlags = static_cast<std::uint16_t>(~kIsInvisible);
        EXPECT_FALSE(LoadPaletteFileFilter(&block)) << name << ", folder";
    }
    ParamBlockRec nameless;
    EXPECT_TRUE(LoadPaletteFileFilter(&nameless));
    nameless.fdType = kTableFileType;
    EXPECT_FALSE(LoadPaletteFileFilter(&nameless));
}

} // namespace
