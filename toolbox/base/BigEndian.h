// Big-endian integers in records that are shared byte by byte.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// Reads a big-endian integer of T's width from bytes.
template <std::integral T> constexpr T GetBE(const std::uint8_t* bytes) {
    std::make_unsigned_t<T> value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value = static_cast<std::make_unsigned_t<T>>(value << 8 | bytes[i]);
    return static_cast<T>(value);
}

/// Writes value into sizeof(T) bytes, most significant first.
template <std::integral T> constexpr void PutBE(std::uint8_t* bytes, T value) {
    auto rest = static_cast<std::make_unsigned_t<T>>(value);
    for (std::size_t i = sizeof(T); i-- > 0;) {
        bytes[i] = static_cast<std::uint8_t>(rest);
        rest = static_cast<std::make_unsigned_t<T>>(rest >> 8);
    }
}

/// An integer field of alignment 1 that reads and assigns like T and lies big-endian in memory.
template <std::integral T> class BigEndian {
  public:
    constexpr operator T() const { return GetBE<T>(bytes); }
    constexpr BigEndian& operator=(T value) {
        PutBE<T>(bytes, value);
        return *this;
    }

  private:
    std::uint8_t bytes[sizeof(T)];
};

using BigInt16 = BigEndian<std::int16_t>;
using BigInt32 = BigEndian<std::int32_t>;
using BigUInt32 = BigEndian<std::uint32_t>;
static_assert(sizeof(BigInt16) == 2 && alignof(BigInt16) == 1);
static_assert(sizeof(BigInt32) == 4 && alignof(BigInt32) == 1);
