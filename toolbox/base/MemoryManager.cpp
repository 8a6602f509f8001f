#include "MemoryManager.h"

#include "FaultInjection.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

// Stands in front of every pointer block; as large as the strictest alignment, so that what
// follows is aligned for any type.
struct alignas(std::max_align_t) BlockHeader {
    Size size;
};

// A handle is the address of the first member.
struct MasterPointer {
    Ptr block;
    Size size;
};

std::atomic<long> liveBlocks = 0;

MasterPointer* MasterOf(Handle handle) {
    return reinterpret_cast<MasterPointer*>(handle);
}

} // namespace

Ptr NewPtr(Size size) {
    if (size < 0 || FaultAt(FaultPoint::allocate) != noErr) return nullptr;
    void* memory = std::malloc(sizeof(BlockHeader) + static_cast<std::size_t>(size));
    if (!memory) return nullptr;
    static_cast<BlockHeader*>(memory)->size = size;
    ++liveBlocks;
    return static_cast<Ptr>(memory) + sizeof(BlockHeader);
}

void DisposePtr(Ptr block) {
    if (!block) return;
    std::free(block - sizeof(BlockHeader));
    --liveBlocks;
}

Size GetPtrSize(Ptr block) {
    return reinterpret_cast<const BlockHeader*>(block - sizeof(BlockHeader))->size;
}

Handle NewHandle(Size size) {
    if (size < 0 || FaultAt(FaultPoint::allocate) != noErr) return nullptr;
    auto* master = static_cast<MasterPointer*>(std::malloc(sizeof(MasterPointer)));
    // An empty block still has an address of its own, so that *handle is never null.
    auto* block = static_cast<Ptr>(std::malloc(size > 0 ? static_cast<std::size_t>(size) : 1));
    if (!master || !block) {
        std::free(master);
        std::free(block);
        return nullptr;
    }
    *master = {block, size};
    ++liveBlocks;
    return &master->block;
}

void DisposeHandle(Handle handle) {
    if (!handle) return;
    std::free(*handle);
    std::free(MasterOf(handle));
    --liveBlocks;
}

Size GetHandleSize(Handle handle) {
    return handle ? MasterOf(handle)->size : 0;
}

OSErr SetHandleSize(Handle handle, Size size) {
    if (size < 0 || FaultAt(FaultPoint::allocate) != noErr) return memFullErr;
    void* moved = std::realloc(*handle, size > 0 ? static_cast<std::size_t>(size) : 1);
    if (!moved) return memFullErr;
    *MasterOf(handle) = {static_cast<Ptr>(moved), size};
    return noErr;
}

void BlockMove(const void* source, void* destination, Size count) {
    if (count > 0) std::memmove(destination, source, static_cast<std::size_t>(count));
}

long LiveMemoryBlocks() {
    return liveBlocks;
}
