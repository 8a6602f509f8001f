// The one table behind all keys. A key is a place (low half, counted from 1) and the generation of
// that place (high half), so that a key kept too long finds another generation and reads as null.
#include "AddressTable.h"

#include <mutex>
#include <stdexcept>
#include <vector>

namespace {

struct Place {
    const void* address = nullptr;
    std::uint16_t generation = 0;
    bool live = false;
};

struct Table {
    std::mutex lock;
    std::vector<Place> places;
    std::vector<std::uint16_t> free;
};

constexpr std::size_t kMostPlaces = 65535;

// Lives as long as the process: hosts may still hold keys while other statics are destroyed.
Table& TheTable() {
    static Table& table = *new Table;
    return table;
}

Place* FindLive(Table& table, std::uint32_t key) {
    const std::size_t number = key & 0xFFFF;
    if (number == 0 || number > table.places.size()) return nullptr;
    Place& place = table.places[number - 1];
    return place.live && place.generation == key >> 16 ? &place : nullptr;
}

} // namespace

std::uint32_t AddrSlotPut(const void* address) {
    Table& table = TheTable();
    const std::lock_guard guard(table.lock);
    if (table.free.empty()) {
        if (table.places.size() == kMostPlaces)
            throw std::length_error("the address table is full");
        // Room for every place on the free list is made here, so that dropping never allocates.
        table.free.reserve(table.places.size() + 1);
        table.places.emplace_back();
        table.free.push_back(static_cast<std::uint16_t>(table.places.size()));
    }
    const std::uint16_t number = table.free.back();
    table.free.pop_back();
    Place& place = table.places[number - 1U];
    place.address = address;
    place.live = true;
    return std::uint32_t{place.generation} << 16 | number;
}

void AddrSlotMove(std::uint32_t key, const void* address) {
    Table& table = TheTable();
    const std::lock_guard guard(table.lock);
    if (Place* place = FindLive(table, key)) place->address = address;
}

void* AddrSlotGet(std::uint32_t key) {
    Table& table = TheTable();
    const std::lock_guard guard(table.lock);
    const Place* place = FindLive(table, key);
    return place ? const_cast<void*>(place->address) : nullptr;
}

void AddrSlotDrop(std::uint32_t key) {
    Table& table = TheTable();
    const std::lock_guard guard(table.lock);
    Place* place = FindLive(table, key);
    if (!place) return;
    place->live = false;
    ++place->generation;
    table.free.push_back(static_cast<std::uint16_t>(key & 0xFFFF));
}
