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
    EXPECT_EQ(CallsSoFar(FaultPoint::allocate), 3);
    EXPECT_EQ(LiveMemoryBlocks(), before + 2);
    FailNthCall(FaultPoint::allocate, 1, memFullErr);
    EXPECT_EQ(NewPtr(8), nullptr);
    ClearFaults();
    EXPECT_EQ(NewPtr(-1), nullptr);
    EXPECT_EQ(NewHandle(-1), nullptr);
    EXPECT_EQ(GetPtrSize(block), 10);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U);
    DisposePtr(block);
    DisposeHandle(handle);
    DisposePtr(nullptr);
    DisposeHandle(nullptr);
    EXPECT_EQ(LiveMemoryBlocks(), before);
}

TEST(Memory, KeepsTheBytesOfAHandleThatChangesItsSize) {
    const Handle handle = NewHandle(4);
    ASSERT_NE(handle, nullptr);
    std::memcpy(*handle, "abcd", 4);
    FailNthCall(FaultPoint::allocate, 1, memFullErr);
    EXPECT_EQ(SetHandleSize(handle, 9), memFullErr);
    ClearFaults();
    EXPECT_EQ(GetHandleSize(handle), 4);
    for (const Size size : {100000, 2, 0, 3}) {
        EXPECT_EQ(SetHandleSize(handle, size), noErr);
        EXPECT_EQ(GetHandleSize(handle), size);
        EXPECT_EQ(std::memcmp(*handle, "abcd", size == 100000 ? 4 : size == 2 ? 2 : 0), 0);
    }
    std::memcpy(*handle, "xyz", 3);
    BlockMove(*handle, *handle + 1, 2);
    EXPECT_EQ(std::memcmp(*handle, "xxy", 3), 0) << "overlapping";
    DisposeHandle(handle);
}

TEST(AddressKeys, LeadToTheirAddressUntilTheyAreDropped) {
    int object = 0, moved = 0;
    const std::uint32_t key = AddrSlotPut(&object);
    const std::uint32_t twin = AddrSlotPut(&object);
    EXPECT_NE(key, 0U);
    EXPECT_NE(key, twin);
    EXPECT_EQ(AddrSlotGet(key), &object);
    AddrSlotMove(key, &moved);
    EXPECT_EQ(AddrSlotGet(key), &moved);
    EXPECT_EQ(AddrSlotGet(twin), &object);
    AddrSlotDrop(key);
    AddrSlotDrop(key);
    AddrSlotMove(key, &object);
    for (const std::uint32_t stale : {0U, key, key + 0x10000U, 0xFFFFFFFFU})
        EXPECT_EQ(AddrSlotGet(stale), nullptr) << std::hex << stale;
    EXPECT_EQ(AddrSlotGet(twin), &object) << "dropping twice freed no other place";
    AddrSlotDrop(twin);
}

TEST(AddressKeys, DoNotRepeatWhileTheirPlaceIsUsed65535MoreTimes) {
    int object = 0;
    std::set<std::uint32_t> seen;
    for (int i = 0; i < 65536; ++i) {
        const std::uint32_t key = AddrSlotPut(&object);
        EXPECT_TRUE(seen.insert(key).second) << "use " << i << " repeats key " << key;
        AddrSlotDrop(key);
    }
}

TEST(AddressKeys, RunOutWithAnExceptionAndComeBack) {
    std::vector<std::uint32_t> keys;
    EXPECT_THROW(while (keys.size() < 70000) keys.push_back(AddrSlotPut(&keys)), std::length_error);
    EXPECT_EQ(std::set<std::uint32_t>(keys.begin(), keys.end()).size(), 65535U);
    for (const std::uint32_t key : keys) AddrSlotDrop(key);
    const AddressKey again(&keys);
    EXPECT_EQ(AddrSlotGet(again.Value()), &keys);
}

TEST(AddressKeys, LeadThroughFieldsToObjectsAndProcedures) {
    struct {
        AddressSlot<int> number;
        AddressSlot<int(int)> procedure;
    } fields{};
    static_assert(sizeof fields == 8);
    EXPECT_EQ(fields.number.Get(), nullptr);
    int number = 5;
    {
        const AddressKey numberKey(&number);
        const AddressKey procedureKey(+[](int value) { return value + 1; });
        fields.number.Set(numberKey);
        fields.procedure.Set(procedureKey);
        EXPECT_EQ(fields.procedure.Get()(*fields.number.Get()), 6);
    }
    EXPECT_EQ(fields.number.Get(), nullptr) << "the owner is gone";
    EXPECT_EQ(fields.procedure.Get(), nullptr);
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
    const std::uint8_t want[] = {0xFF, 0xFE, 0xFE, 0xFD, 0xFC, 0xFC, 0x89, 0xAB, 0xCD, 0xEF};
    static_assert(sizeof fields == sizeof want);
    EXPECT_EQ(std::memcmp(&fields, want, sizeof want), 0);
    EXPECT_EQ(fields.small, -2);
    EXPECT_EQ(fields.large, -0x01020304);
    EXPECT_EQ(fields.natural, 0x89ABCDEF);
}
