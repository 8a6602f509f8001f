// The one table behind all keys. A key is a slot (low half, counted from 1) and the generation of
// that slot (high half), so that a key kept too long finds another generation and reads as null.
#include "AddressTable.h"

#include <mutex>
#include <stdexcept>
#include <vector>

namespace {

struct Slot {
    const void* address = nullptr;
    std::uint16_t generation = 0;
    bool live = false;
};

struct SlotTable {
    std::mutex lock;
    std::vector<Slot> slots;
    std::vector<std::uint16_t> free;
};

constexpr std::size_t kMostSlots = 65535;

// Lives as long as the process: hosts may still hold keys while other statics are destroyed.
SlotTable& TheSlots() {
    static SlotTable& table = *new SlotTable;
    return table;
}

Slot* FindLive(SlotTable& table, std::uint32_t key) {
    const std::size_t number = key & 0xFFFF;
    if (number == 0 || number > table.slots.size()) return nullptr;
    Slot& slot = table.slots[number - 1];
    return slot.live && slot.generation == key >> 16 ? &slot : nullptr;
}

} // namespace

std::uint32_t AddrSlotPut(const void* address) {
    SlotTable& table = TheSlots();
    const std::lock_guard guard(table.lock);
    if (table.free.empty()) {
        if (table.slots.size() == kMostSlots) throw std::length_error("the address table is full");
        // Room for every slot on the free list is made here, so that dropping never allocates.
        table.free.reserve(table.slots.size() + 1);
        table.slots.emplace_back();
        table.free.push_back(static_cast<std::uint16_t>(table.slots.size()));
    }
    const std::uint16_t number = table.free.back();
    table.free.pop_back();
    Slot& slot = table.slots[number - 1U];
    slot.address = address;
    slot.live = true;
    return std::uint32_t{slot.generation} << 16 | number;
}

void AddrSlotMove(std::uint32_t key, const void* address) {
    SlotTable& table = TheSlots();
    const std::lock_guard guard(table.lock);
    if (Slot* slot = FindLive(table, key)) slot->address = address;
}

void* AddrSlotGet(std::uint32_t key) {
    SlotTable& table = TheSlots();
    const std::lock_guard guard(table.lock);
    const Slot* slot = FindLive(table, key);
    return slot ? const_cast<void*>(slot->address) : nullptr;
}

void AddrSlotDrop(std::uint32_t key) {
    SlotTable& table = TheSlots();
    const std::lock_guard guard(table.lock);
    Slot* slot = FindLive(table, key);
    if (!slot) return;
    slot->live = false;
    ++slot->generation;
    table.free.push_back(static_cast<std::uint16_t>(key & 0xFFFF));
}
