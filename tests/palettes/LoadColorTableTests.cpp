// Palette files written byte by byte, whole and damaged, and the dialog that offers them.
#include "LoadColorTable.h"

#include "FaultInjection.h"
#include "StandardFile.h"
#include "TemporaryFolder.h"

#include <cstring>
#include <functional>

#include <gtest/gtest.h>

namespace {

std::string Bytes(std::initializer_list<int> values) {
    return {values.begin(), values.end()};
}

std::string WordBE(int value) {
    return Bytes({value >> 8 & 255, value & 255});
}

RGBtuple ColorOf(int i) {
    const auto level = [](int value) { return static_cast<std::uint8_t>(value); };
    return {0, level(i + 1), level(3 * i + 2), level(255 - i)};
}

// High and low bytes of the components differ, and the fourth word is not 0.
std::string Swatches(int count, int stored, int version = 1, int space = 0) {
    std::string file = WordBE(version) + WordBE(count);
    for (int i = 0; i < stored; ++i) {
        const RGBtuple c = ColorOf(i);
        file += WordBE(space) + Bytes({0xEE, c.red, 0xDD, c.green, 0xCC, c.blue, 0xAB, 0xCD});
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

std::string Riff(int count, int stored, const std::string& signature = "RIFF",
                 const std::string& form = "PAL ") {
    std::string file = signature + Bytes({9, 9, 9, 9}) + form + "data" + Bytes({8, 8, 8, 8, 0, 3}) +
                       Bytes({count & 255, count >> 8 & 255});
    for (int i = 0; i < stored; ++i) {
        const RGBtuple c = ColorOf(i);
        file += Bytes({c.red, c.green, c.blue, 0x77});
    }
    return file;
}

RGBLookUpTable TableOf(int colors) {
    RGBLookUpTable table = {};
    for (int i = 0; i < colors; ++i) SetTableEntry(table, i, ColorOf(i));
    return table;
}

struct Loaded {
    OSErr error = 1;
    std::int32_t count = 4711;
    RGBLookUpTable table;
    bool Untouched() const {
        const RGBLookUpTable marked = Marked();
        return count == 4711 && std::memcmp(&table, &marked, sizeof table) == 0;
    }
    bool Holds(int colors) const {
        const RGBLookUpTable wanted = TableOf(colors);
        return std::memcmp(&table, &wanted, sizeof table) == 0;
    }
    static RGBLookUpTable Marked() {
        RGBLookUpTable marked;
        std::memset(&marked, 0x5A, sizeof marked);
        return marked;
    }
};

Loaded Load(const std::string& path, OSType type) {
    Loaded loaded;
    loaded.table = Loaded::Marked();
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

// What each kind needs to be read whole.
const struct {
    const char* name;
    std::string bytes;
    OSType type;
    int colors;
} kValidFiles[] = {
    {"swatches", Swatches(5, 5), kSwatchFileType, 5},
    {"triples", Triples(), kTableFileType, 256},
    {"riff", Riff(6, 6), kRiffPaletteFileType, 6},
};

TEST(LoadColorTable, ReadsTheColorsAndBlackensTheRest) {
    const struct {
        const char* name;
        std::string bytes;
        OSType type;
        int colors;
    } cases[] = {
        {"swatches with more behind", Swatches(7, 9), kSwatchFileType, 7},
        {"all swatches", Swatches(256, 256), kSwatchFileType, 256},
        {"more swatches than a palette holds", Swatches(300, 256), kSwatchFileType, 256},
        {"no swatches", Swatches(0, 0), kSwatchFileType, 0},
        {"a negative count", Swatches(-1, 0), kSwatchFileType, 0},
        {"triples with more behind", Triples() + "more", kTableFileType, 256},
        {"triples of an unknown type", Triples(), kUnknownType, 256},
        {"riff", Riff(16, 17), kRiffPaletteFileType, 16},
        {"no riff colours", Riff(0, 0), kRiffPaletteFileType, 0},
        {"all riff colours", Riff(256, 256), kRiffPaletteFileType, 256},
        {"more riff colours than a palette holds", Riff(300, 256), kRiffPaletteFileType, 256},
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
    const std::string swatch = Swatches(3, 3);
    const struct {
        const char* name;
        std::string bytes;
        OSType type;
        OSErr error;
    } cases[] = {
        {"swatch version 0", Swatches(3, 3, 0), kSwatchFileType, -1},
        {"swatch version 2, nothing else", WordBE(2), kSwatchFileType, -1},
        {"swatch version 256", Swatches(3, 3, 256), kSwatchFileType, -1},
        {"colour space 1", Swatches(3, 3, 1, 1), kSwatchFileType, -2},
        {"colour space 256, nothing else", Swatches(3, 0) + WordBE(256), kSwatchFileType, -2},
        {"the last colour space", swatch.substr(0, 24) + WordBE(7), kSwatchFileType, -2},
        {"a version before a space", Swatches(3, 3, 2, 2), kSwatchFileType, -1},
        {"no RIFF", "RIFX", kRiffPaletteFileType, -1},
        {"another form", Riff(2, 2, "RIFF", "PAL!").substr(0, 12), kRiffPaletteFileType, -1},
        {"swatches read as riff", Swatches(3, 3), kRiffPaletteFileType, -1},
    };
    for (const auto& c : cases) {
        const Loaded loaded = LoadBytes(c.bytes, c.type);
        EXPECT_EQ(loaded.error, c.error) << c.name;
        EXPECT_TRUE(loaded.Untouched()) << c.name;
    }
}

TEST(LoadColorTable, ReportsEveryLengthThatIsTooShort) {
    const TemporaryFolder folder;
    for (const auto& valid : kValidFiles) {
        for (std::size_t length = 0; length < valid.bytes.size(); ++length) {
            const Loaded loaded =
                Load(folder.Write("palette", valid.bytes.substr(0, length)), valid.type);
            EXPECT_EQ(loaded.error, eofErr) << valid.name << " of " << length << " bytes";
            EXPECT_TRUE(loaded.Untouched()) << valid.name << " of " << length << " bytes";
        }
        EXPECT_EQ(Load(folder.Write("palette", valid.bytes), valid.type).count, valid.colors);
    }
}

TEST(LoadColorTable, HandsOnEveryFaultOfTheFileAndClosesIt) {
    const TemporaryFolder folder;
    for (const auto& valid : kValidFiles)
        for (const FaultPoint point : {FaultPoint::readFile, FaultPoint::seekFile}) {
            ClearFaults();
            const std::string path = folder.Write("palette", valid.bytes);
            ASSERT_EQ(Load(path, valid.type).error, noErr);
            for (int calls = CallsSoFar(point), n = 1; n <= calls; ++n) {
                ClearFaults();
                FailNthCall(point, n, -8000);
                const Loaded loaded = Load(path, valid.type);
                EXPECT_EQ(loaded.error, -8000) << valid.name << ", call " << n;
                EXPECT_TRUE(loaded.Untouched()) << valid.name << ", call " << n;
                EXPECT_EQ(CallsSoFar(point), n) << valid.name << ": read on after the fault";
                EXPECT_EQ(CallsSoFar(FaultPoint::closeFile), 1) << valid.name << ", call " << n;
            }
            ClearFaults();
        }
}

TEST(LoadColorTable, AFileThatCannotBeOpenedChangesNothingAndSaysNothing) {
    const TemporaryFolder folder;
    const Loaded loaded = Load(folder.Path("missing.PAL"), kRiffPaletteFileType);
    EXPECT_EQ(loaded.error, noErr);
    EXPECT_TRUE(loaded.Untouched());
}

TEST(LoadColorTable, GoesByTheTypeNotByTheName) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("table.ZCO", Triples());
    EXPECT_TRUE(Load(path, kTableFileType).Holds(256));
    EXPECT_EQ(Load(path, kSwatchFileType).error, kNotAPaletteFile);
}

Str255* Pascal(const std::string& text) {
    static Str255 string;
    string[0] = static_cast<std::uint8_t>(text.size());
    // What lies behind the name must not count.
    std::memset(string + 1, 'Z', sizeof string - 1);
    std::copy(text.begin(), text.end(), string + 1);
    return &string;
}

const struct {
    OSType type;
    std::string name;
    bool isPalette;
} kNames[] = {
    {kSwatchFileType, "x", true},
    {kTableFileType, "x.png", true},
    {kRiffPaletteFileType, "", true},
    {FourCC("pal "), "x", false},
    {kUnknownType, "x.ZCO", true},
    {kUnknownType, "x.ZCT", true},
    {kUnknownType, "x.PAL", true},
    {kUnknownType, ".PAL", true},
    {kUnknownType, "a.png.PAL", true},
    {kUnknownType, "a.PAL.png", false},
    {kUnknownType, "x.pal", false},
    {kUnknownType, "x.ZC", true},
    {kUnknownType, "x.P", true},
    {kUnknownType, "x.CO", false},
    {kUnknownType, "x.", true},
    {kUnknownType, "x.ZCOX", false},
    {kUnknownType, "ZCO", false},
    {kUnknownType, "", false},
    {kUnknownType, std::string(251, 'n') + ".ZCT", true},
};

TEST(PaletteFileFilter, ShowsPaletteFilesByTypeOrExtension) {
    for (const auto& c : kNames) {
        EXPECT_EQ(IsPaletteFile(&c.type, *Pascal(c.name)) != 0, c.isPalette) << c.name;
        ParamBlockRec block;
        block.ioNamePtr = *Pascal(c.name);
        block.fdType = c.type;
        EXPECT_EQ(LoadPaletteFileFilter(&block) == 0, c.isPalette) << c.name;
        block.fdFlags = kIsInvisible;
        EXPECT_TRUE(LoadPaletteFileFilter(&block)) << c.name << ", invisible";
        block.ioFlAttrib = kIsDirectory;
        EXPECT_TRUE(LoadPaletteFileFilter(&block)) << c.name << ", invisible folder";
        block.fdFlags = static_cast<std::uint16_t>(~kIsInvisible);
        EXPECT_FALSE(LoadPaletteFileFilter(&block)) << c.name << ", folder";
    }
    ParamBlockRec nameless;
    EXPECT_TRUE(LoadPaletteFileFilter(&nameless));
    nameless.fdType = kTableFileType;
    EXPECT_FALSE(LoadPaletteFileFilter(&nameless));
}

/// Chooses one file, or cancels; notes the filter it was given.
class ChoosingUser final : public StandardFileResponder {
  public:
    ChoosingUser() : outer(SetStandardFileResponder(this)) {}
    ~ChoosingUser() override { SetStandardFileResponder(outer); }
    void PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply*) override { FAIL(); }
    void GetFile(FileFilterProc given, StandardFileReply* reply) override {
        filter = given;
        reply->sfFile.parID = 77;
        reply->sfType = kSwatchFileType;
        reply->sfGood = chooses;
    }
    bool chooses = true;
    FileFilterProc filter = nullptr;

  private:
    StandardFileResponder* outer;
};

TEST(GetColorTableFile, AnswersTheChosenFileAndItsTypeOrLeavesBoth) {
    ChoosingUser user;
    for (const bool chooses : {true, false}) {
        FSSpec file;
        OSType type = 0;
        user.chooses = chooses;
        EXPECT_EQ(GetColorTableFile(&file, &type), chooses);
        EXPECT_EQ(file.parID, chooses ? 77 : 0);
        EXPECT_EQ(type == kSwatchFileType, chooses);
        EXPECT_EQ(user.filter, LoadPaletteFileFilter);
    }
}

// On success the most significant byte comes first; else the word stays.
TEST(DoReadWord, ReadsBigEndianAndKeepsTheWordOnAShortFile) {
    const TemporaryFolder folder;
    FSSpec spec;
    ASSERT_EQ(PathToFSSpec(folder.Write("words", Bytes({0x81, 0x02, 0x03})), &spec), noErr);
    std::int16_t refNum = 0;
    ASSERT_EQ(FSpOpenDF(&spec, fsRdPerm, &refNum), noErr);
    short word = 0;
    EXPECT_EQ(DoReadWord(refNum, &word), noErr);
    EXPECT_EQ(word, static_cast<short>(0x8102));
    EXPECT_EQ(DoReadWord(refNum, &word), eofErr);
    EXPECT_EQ(word, static_cast<short>(0x8102));
    FSClose(refNum);
    EXPECT_EQ(DoReadWord(refNum, &word), rfNumErr);
}

} // namespace
