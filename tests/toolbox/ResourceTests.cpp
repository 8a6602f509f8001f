// Resource files, whole and damaged, and look-ups across several open ones.
#include "BigEndian.h"
#include "FaultInjection.h"
#include "ResourceManager.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

struct Entry {
    std::string type;
    int id;
    std::string data;
    std::string name = {};
};

std::string Word(std::size_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}
std::string Long(std::size_t value) {
    return Word(value >> 16 & 0xFFFF) + Word(value & 0xFFFF);
}
std::string Counted(const std::string& text) {
    return static_cast<char>(text.size()) + text;
}

/// A file with one type entry for each resource.
std::string BuildFile(const std::vector<Entry>& entries) {
    std::string data, types = Word(entries.size() - 1), references, names;
    for (const Entry& entry : entries) {
        types += entry.type + Word(0) + Word(2 + 8 * entries.size() + references.size());
        references += Word(static_cast<std::size_t>(entry.id)) +
                      (entry.name.empty() ? Word(0xFFFF) : Word(names.size())) + Long(data.size()) +
                      Long(0);
        data += Long(entry.data.size()) + entry.data;
        if (!entry.name.empty()) names += Counted(entry.name);
    }
    const std::string lists = types + references;
    const std::string header = Long(16) + Long(16 + data.size()) + Long(data.size()) +
                               Long(28 + lists.size() + names.size());
    return header + data + header + Long(0) + Word(0) + Word(0) + Word(28) +
           Word(28 + lists.size()) + lists + names;
}

std::string StringList(const std::vector<std::string>& strings) {
    std::string list = Word(strings.size());
    for (const std::string& string : strings) list += Counted(string);
    return list;
}

std::string DataOf(const char (&type)[5], std::int16_t id) {
    const Handle handle = GetResource(FourCC(type), id);
    return handle ? std::string(*handle, *handle + GetHandleSize(handle)) : "none";
}

std::string IndString(std::int16_t list, std::int16_t index) {
    Str255 string = {1, '?'};
    GetIndString(string, list, index);
    return std::string(string + 1, string + 1 + string[0]);
}

const std::string kSample = BuildFile({{"STR#", 128, StringList({"one", "", "three"})},
                                       {"DATA", -5, "bytes", "named"},
                                       {"DATA", 7, ""}});

/// Opens the bytes, uses whatever is there, and closes again.
std::int16_t OpenAndUse(const TemporaryFolder& folder, const std::string& bytes) {
    const std::int16_t file = OpenResFile(folder.Write("file", bytes));
    for (std::int16_t index = 0; index < 5; ++index) IndString(128, index);
    DataOf("DATA", -5);
    CloseResFile(file);
    return file;
}

class Resources : public testing::Test {
  protected:
    void TearDown() override {
        ClearFaults();
        EXPECT_EQ(LiveMemoryBlocks(), before) << "blocks were left over";
    }
    const long before = LiveMemoryBlocks();
    TemporaryFolder folder;
};

TEST_F(Resources, AreFoundByTypeAndIdInTheFileOpenedLast) {
    const std::int16_t first = OpenResFile(folder.Write("first", kSample));
    const std::int16_t second =
        OpenResFile(folder.Write("second", BuildFile({{"DATA", 7, "newer"}})));
    ASSERT_GT(first, 0);
    ASSERT_GT(second, 0);
    EXPECT_NE(first, second);
    EXPECT_EQ(DataOf("DATA", -5), "bytes");
    EXPECT_EQ(DataOf("DATA", 7), "newer");
    EXPECT_EQ(DataOf("DATA", 128), "none");
    EXPECT_EQ(DataOf("STR ", 128), "none");
    CloseResFile(second);
    EXPECT_EQ(DataOf("DATA", 7), "");
    CloseResFile(second);
    const std::int16_t third = OpenResFile(folder.Write("third", BuildFile({{"DATA", 7, "3"}})));
    CloseResFile(first);
    EXPECT_EQ(DataOf("DATA", -5), "none");
    EXPECT_EQ(DataOf("DATA", 7), "3");
    CloseResFile(third);
}

TEST_F(Resources, GiveStringsByIndexAndEmptyOnesForWhatIsMissing) {
    const std::int16_t file = OpenResFile(
        folder.Write("file", BuildFile({{"STR#", 128, StringList({"one", "", "three"})},
                                        {"STR#", 129, StringList({})},
                                        {"STR#", 130,
                                         Word(3) + Counted("full") +
                                             "\x09"
                                             "cut"},
                                        {"STR#", 131, "\x01"},
                                        {"STR#", 132, StringList({"a"}) + Counted("beyond")}})));
    ASSERT_GT(file, 0);
    const struct {
        std::int16_t list, index;
        std::string string;
    } cases[] = {{128, 1, "one"}, {128, 2, ""}, {128, 3, "three"}, {128, 4, ""}, {128, 0, ""},
                 {128, -1, ""},   {129, 1, ""}, {130, 1, "full"},  {130, 2, ""}, {130, 3, ""},
                 {131, 1, ""},    {132, 2, ""}, {500, 1, ""}};
    for (const auto& c : cases)
        EXPECT_EQ(IndString(c.list, c.index), c.string) << c.list << " index " << c.index;
    CloseResFile(file);
}

TEST_F(Resources, AreSafeFromEveryTruncationAndEveryChangedByte) {
    ASSERT_GT(OpenAndUse(folder, kSample), 0);
    for (std::size_t length = 0; length < kSample.size(); ++length)
        EXPECT_EQ(OpenAndUse(folder, kSample.substr(0, length)), mapReadErr) << length << " bytes";
    for (std::size_t i = 0; i < kSample.size(); ++i)
        for (const int change : {0x01, 0x04, 0x40, 0x80, 0xFF}) {
            std::string changed = kSample;
            changed[i] = static_cast<char>(changed[i] ^ change);
            const std::int16_t file = OpenAndUse(folder, changed);
            EXPECT_TRUE(file > 0 || file == mapReadErr) << file << " for byte " << i;
        }
}

TEST_F(Resources, OfOverlappingListsAreRefusedBeforeTheyFillTheMemory) {
    std::string file = BuildFile({{"DATA", 1, std::string(100000, 'x')}, {"DATA", 2, "y"}});
    // The second reference, whose data offset lies 8 bytes before the file's end, takes the first's
    // data as well.
    file.replace(file.size() - 8, 4, Long(0));
    EXPECT_EQ(OpenAndUse(folder, file), mapReadErr);

    // Every type takes the first one's list.
    std::vector<Entry> many(300, Entry{"DATA", 1, ""});
    file = BuildFile(many);
    const std::size_t types = file.size() - 300 * 12 - 300 * 8;
    for (std::size_t i = 0; i < 300; ++i)
        file.replace(types + i * 8 + 4, 4, Word(299) + Word(2 + 300 * 8));
    EXPECT_EQ(OpenAndUse(folder, file), mapReadErr);
}

TEST_F(Resources, SayWhyAFileCannotBeOpened) {
    EXPECT_EQ(OpenResFile(folder.Path("missing")), resFNotFound);
    EXPECT_EQ(OpenResFile(folder.Path()), resFNotFound);
    EXPECT_EQ(OpenResFile(folder.Write("text", std::string(2000, 'x'))), mapReadErr);
    std::string file = BuildFile({{"DATA", 1, "bytes", "named"}});
    ASSERT_GT(OpenAndUse(folder, file), 0);
    file[file.size() - 6] = 6; // the name's length
    EXPECT_EQ(OpenAndUse(folder, file), mapReadErr);
    EXPECT_GT(OpenAndUse(folder, BuildFile({})), 0) << "a file without resources is whole";
}

TEST_F(Resources, ReportArmedFaultsAndKeepNothing) {
    FailNthCall(FaultPoint::loadResource, 1, ioErr);
    EXPECT_EQ(OpenAndUse(folder, kSample), ioErr);
    for (int n = 1; n <= 3; ++n) {
        FailNthCall(FaultPoint::allocate, n, memFullErr);
        EXPECT_EQ(OpenAndUse(folder, kSample), memFullErr) << "allocation " << n;
        EXPECT_EQ(LiveMemoryBlocks(), before) << "allocation " << n;
    }
    ClearFaults();
    const std::int16_t file = OpenResFile(folder.Write("file", kSample));
    EXPECT_EQ(GetResource(FourCC("DATA"), 99), nullptr); // a miss is no step that could fail
    EXPECT_EQ(CallsSoFar(FaultPoint::loadResource), 1);
    FailNthCall(FaultPoint::loadResource, 2, resNotFound);
    EXPECT_EQ(IndString(128, 1), "one");
    EXPECT_EQ(IndString(128, 1), "");
    EXPECT_EQ(IndString(128, 1), "one");
    CloseResFile(file);
}

} // namespace
