// Blocks, keys and big-endian fields.
#include "AddressTable.h"
#include "FaultInjection.h"
#include "MemoryManager.h"

#include <cstring>
#include <set>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

TEST(Memory, FailsAtTheArmedAllocationAndCountsWhatIsAlive) {
    const long before = LiveMemoryBlocks();
    FailNthCall(FaultPoint::allocate, 3, memFullErr);
    const Ptr block = NewPtr(10);
    const Handle handle = NewHandle(0);
    ASSERT_TRUE(block && handle && *handle);
    EXPECT_EQ(NewHandle(8), nullptr);
    EXPECT_EQ(LiveMemoryBlocks(), before + 2);
    EXPECT_EQ(NewPtr(-1), nullptr);
    EXPECT_EQ(NewHandle(-1), nullptr);
    EXPECT_EQ(GetPtrSize(block), 10);
    DisposePtr(block);
    DisposeHandle(handle);
    DisposePtr(nullptr);
    DisposeHandle(nullptr);
    EXPECT_EQ(LiveMemoryBlocks(), before);
    ClearFaults();
}

TEST(Memory, KeepsTheBytesOfAHandleThatChangesItsSize) {
    const Handle handle = NewHandle(4);
    ASSERT_NE(handle, nullptr);
    std::memcpy(*handle, "abcd", 4);
    FailNthCall(FaultPoint::allocate, 1, memFullErr);
    EXPECT_EQ(SetHandleSize(handle, 9), memFullErr);
    ClearFaults();
    EXPECT_EQ(GetHandleSize(handle), 4);
    for (const auto& [size, kept] :
         {std::pair<Size, std::size_t>{100000, 4}, {2, 2}, {0, 0}, {3, 0}}) {
        EXPECT_EQ(SetHandleSize(handle, size), noErr);
        EXPECT_EQ(GetHandleSize(handle), size);
        EXPECT_EQ(std::memcmp(*handle, "abcd", kept), 0);
    }
    std::memcpy(*handle, "xyz", 3);
    BlockMove(*handle, *handle + 1, 2);
    EXPECT_EQ(std::memcmp(*handle, "xxy", 3), 0) << "overlapping";
    DisposeHandle(handle);
}

TEST(AddressKeys, LeadToTheirAddressUntilTheyAreDropped) {
    int object = 0, moved = 0;
    const std::uint32_t key = AddrSlotPut(&object), twin = AddrSlotPut(&object);
    EXPECT_NE(key, twin);
    AddrSlotMove(key, &moved);
    EXPECT_EQ(AddrSlotGet(key), &moved);
    AddrSlotDrop(key);
    AddrSlotDrop(key);
    AddrSlotMove(key, &object);
    for (const std::uint32_t stale : {0U, key, key + 0x10000U, twin + 0x10000U, 0xFFFFFFFFU})
        EXPECT_EQ(AddrSlotGet(stale), nullptr) << std::hex << stale;
    EXPECT_EQ(AddrSlotGet(twin), &object) << "dropping twice freed no other place";
    AddrSlotDrop(twin);
    const std::uint32_t owned = AddressKey(&object).Value();
    EXPECT_EQ(AddrSlotGet(owned), nullptr) << "dropped with its owner";
}

TEST(AddressKeys, RunOutWithAnExceptionComeBackAndDoNotRepeatSoon) {
    std::vector<std::uint32_t> keys;
    EXPECT_THROW(while (keys.size() < 70000) keys.push_back(AddrSlotPut(&keys)), std::length_error);
    std::set<std::uint32_t> seen(keys.begin(), keys.end());
    EXPECT_EQ(seen.size(), 65535U);
    for (const std::uint32_t key : keys) AddrSlotDrop(key);
    for (int i = 0; i < 65000; ++i) { // one place, used over and over
        const std::uint32_t key = AddrSlotPut(&seen);
        EXPECT_TRUE(seen.insert(key).second) << "use " << i << " repeats key " << key;
        AddrSlotDrop(key);
    }
}

TEST(BigEndianFields, LieMostSignificantByteFirst) {
    struct {
        BigInt16 small;
        BigInt32 large;
        BigUInt32 natural;
    } fields;
    fields.small = -2;
    fields.large = -0x01020304;
    fields.natural = 0x89ABCDEF;
    EXPECT_EQ(std::memcmp(&fields, "\xFF\xFE\xFE\xFD\xFC\xFC\x89\xAB\xCD\xEF", sizeof fields), 0);
    EXPECT_EQ(fields.large, -0x01020304);
}
