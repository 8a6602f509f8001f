// Addresses in a record whose fields have four bytes each: a field holds a key, and one table in
// this library leads from the key to the address.
#pragma once

#include "BigEndian.h"

#pragma GCC visibility push(default)

/// Enters an address, null included, and returns its key, never 0. A key stays valid until it is
/// dropped; the same address entered twice has two keys. Safe from any thread. Throws
/// std::bad_alloc when the table cannot grow, std::length_error past 65,535 live keys.
std::uint32_t AddrSlotPut(const void* address);

/// Lets a live key lead to another address; a stale key is left alone.
void AddrSlotMove(std::uint32_t key, const void* address);

/// The address behind a key; null for key 0 and for every stale or invented key.
void* AddrSlotGet(std::uint32_t key);

/// Ends a key; it reads as null from then on, and no later key equals it until its slot has been
/// used 65,535 more times.
void AddrSlotDrop(std::uint32_t key);

/// One key, dropped at the end of the owner's life.
class AddressKey {
  public:
    explicit AddressKey(const void* address) : key(AddrSlotPut(address)) {}
    template <class Result, class... Arguments>
    explicit AddressKey(Result (*procedure)(Arguments...))
        : AddressKey(reinterpret_cast<const void*>(procedure)) {}
    AddressKey(const AddressKey&) = delete;
    AddressKey& operator=(const AddressKey&) = delete;
    ~AddressKey() { AddrSlotDrop(key); }

    /// The key stays, the address behind it changes: for a buffer that moves between requests.
    void Move(const void* address) { AddrSlotMove(key, address); }
    std::uint32_t Value() const { return key; }

  private:
    std::uint32_t key;
};

/// A four-byte field that leads to a T: an object, bytes, or a procedure.
template <class T> class AddressSlot {
  public:
    T* Get() const { return reinterpret_cast<T*>(AddrSlotGet(key)); }
    void Set(const AddressKey& owner) { key = owner.Value(); }
    void Clear() { key = 0; }

  private:
    BigUInt32 key;
};
static_assert(sizeof(AddressSlot<void>) == 4 && alignof(AddressSlot<void>) == 1);

#pragma GCC visibility pop
