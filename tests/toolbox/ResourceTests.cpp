// Resource files, whole and damaged, and look-ups across several open ones.
#include "FaultInjection.h"
#include "PascalStrings.h"
#include "ResourceBytes.h"
#include "ResourceManager.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

std::string DataOf(const char (&type)[5], std::int16_t id) {
    const Handle handle = GetResource(FourCC(type), id);
    return handle ? std::string(*handle, *handle + GetHandleSize(handle)) : "none";
}

std::string IndString(std::int16_t list, std::int16_t index) {
    Str255 string = {1, '?'};
    GetIndString(string, list, index);
    return FromPascal(string);
}

const std::string kStrings = Word(3) + Counted("one") + Counted("") + Counted("three");
const std::string kSample =
    ResourceFileOf({{"STR#", 128, kStrings}, {"DATA", -5, "bytes", "named"}, {"DATA", 7, ""}});

class Resources : public testing::Test {
  protected:
    void TearDown() override {
        ClearFaults();
        EXPECT_EQ(LiveMemoryBlocks(), before) << "blocks were left over";
    }
    std::int16_t Open(const std::string& bytes) { return OpenResFile(folder.Write("file", bytes)); }
    /// Opens the bytes, uses whatever is there, and closes again.
    std::int16_t OpenAndUse(const std::string& bytes) {
        const std::int16_t file = Open(bytes);
        for (std::int16_t index = 0; index < 5; ++index) IndString(128, index);
        DataOf("DATA", -5);
        CloseResFile(file);
        return file;
    }
    const long before = LiveMemoryBlocks();
    TemporaryFolder folder;
};

TEST_F(Resources, AreFoundByTypeAndIdInTheFileOpenedLast) {
    const std::int16_t first = Open(kSample);
    const std::int16_t second = Open(ResourceFileOf({{"DATA", 7, "newer"}}));
    ASSERT_TRUE(first > 0 && second > 0 && first != second);
    EXPECT_EQ(DataOf("DATA", -5), "bytes");
    EXPECT_EQ(DataOf("DATA", 7), "newer");
    EXPECT_EQ(DataOf("DATA", 128), "none");
    EXPECT_EQ(DataOf("STR ", 128), "none");
    CloseResFile(second);
    CloseResFile(second);
    EXPECT_EQ(DataOf("DATA", 7), "");
    CloseResFile(first);
    EXPECT_EQ(DataOf("DATA", -5), "none");
}

TEST_F(Resources, GiveStringsByIndexAndEmptyOnesForWhatIsMissing) {
    const std::int16_t file =
        Open(ResourceFileOf({{"STR#", 128, kStrings},
                             {"STR#", 130, Word(3) + Counted("full") + "9cut"},
                             {"STR#", 131, "\x01"},
                             {"STR#", 132, Word(1) + "\x01xbeyond"}}));
    ASSERT_GT(file, 0);
    const std::tuple<std::int16_t, std::int16_t, const char*> cases[] = {
        {128, 1, "one"}, {128, 2, ""},  {128, 3, "three"}, {128, 4, ""},
        {128, 0, ""},    {128, -1, ""}, {130, 1, "full"},  {130, 2, ""},
        {131, 1, ""},    {132, 2, ""},  {500, 1, ""}};
    for (const auto& [list, index, want] : cases)
        EXPECT_EQ(IndString(list, index), want) << list << " index " << index;
    CloseResFile(file);
}

TEST_F(Resources, NeedAllBytesOfTheirFile) {
    ASSERT_GT(OpenAndUse(kSample), 0);
    for (std::size_t length = 0; length < kSample.size(); ++length)
        EXPECT_EQ(OpenAndUse(kSample.substr(0, length)), mapReadErr) << length << " bytes";
}

TEST_F(Resources, OfOverlappingListsAreRefusedBeforeTheyFillTheMemory) {
    std::string file = ResourceFileOf({{"DATA", 1, std::string(100000, 'x')}, {"DATA", 2, "y"}});
    // The second reference, whose data offset lies 8 bytes before the file's end, takes the first's
    // data as well.
    file.replace(file.size() - 8, 4, Long(0));
    EXPECT_EQ(OpenAndUse(file), mapReadErr);

    // Every type takes the first one's list.
    file = ResourceFileOf(std::vector<RawResource>(300, {"DATA", 1, ""}));
    const std::size_t types = file.size() - 300 * 12 - 300 * 8;
    for (std::size_t i = 0; i < 300; ++i)
        file.replace(types + i * 8 + 4, 4, Word(299) + Word(2 + 300 * 8));
    EXPECT_EQ(OpenAndUse(file), mapReadErr);
}

TEST_F(Resources, SayWhyAFileCannotBeOpened) {
    EXPECT_EQ(OpenResFile(folder.Path("missing")), resFNotFound);
    EXPECT_EQ(OpenResFile(folder.Path()), resFNotFound);
    EXPECT_EQ(OpenAndUse(std::string(2000, 'x')), mapReadErr);
    EXPECT_GT(OpenAndUse(ResourceFileOf({})), 0) << "a file without resources is whole";
    FailNthCall(FaultPoint::loadResource, 1, ioErr);
    EXPECT_EQ(OpenAndUse(kSample), ioErr);
    for (int n = 1; n <= 3; ++n) {
        FailNthCall(FaultPoint::allocate, n, memFullErr);
        EXPECT_EQ(OpenAndUse(kSample), memFullErr) << "allocation " << n;
        EXPECT_EQ(LiveMemoryBlocks(), before) << "allocation " << n;
    }
}

} // namespace
