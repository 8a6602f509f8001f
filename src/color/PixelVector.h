// The few vector operations that the colour loops need, in the vector types of g++ and clang, which
// use what the processor has. Internal to this folder.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

static_assert(std::endian::native == std::endian::little,
              "the first lane is the lowest part of wider ones");

/// Four bytes as one number, the first in its lowest bits.
inline std::uint32_t LoadFourBytes(const std::uint8_t* bytes) {
    const auto low = static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16);
    return low | std::uint32_t{bytes[3]} << 24;
}

/// The cell of the colour cube in which a colour lies. Red is in the lowest byte, green and blue
/// are above it, and the highest byte is ignored.
inline std::uint32_t CellOf(std::uint32_t color) {
    return (color & 0xF8) << 7 | (color >> 6 & 0x3E0) | (color >> 19 & 0x1F);
}

/// The cells of four pixels, two in each word, the first of them in its lower half.
struct FourCells {
    std::uint64_t firstTwo, lastTwo;
};
/// Reads a byte more than the pixels' 12.
constexpr int kFourCellsBytes = 13;
inline FourCells FindFourCells(const std::uint8_t* rgb) {
    using Words [[gnu::vector_size(16)]] = std::uint32_t;
    const Words colors = {LoadFourBytes(rgb), LoadFourBytes(rgb + 3), LoadFourBytes(rgb + 6),
                          LoadFourBytes(rgb + 9)};
    using Halves [[gnu::vector_size(16)]] = std::uint64_t;
    const auto cells = reinterpret_cast<Halves>((colors & 0xF8) << 7 | (colors >> 6 & 0x3E0) |
                                                (colors >> 19 & 0x1F));
    return {cells[0], cells[1]};
}

/// Red, green, blue and a fourth value, 16 bits each; all arithmetic wraps.
struct PixelVector {
    using Lanes [[gnu::vector_size(16)]] = std::uint16_t;
    using SignedLanes [[gnu::vector_size(16)]] = std::int16_t;
    using Bytes [[gnu::vector_size(16)]] = std::uint8_t;
    using Words [[gnu::vector_size(16)]] = std::uint32_t;
    using Halves [[gnu::vector_size(16)]] = std::uint64_t;

    Lanes lanes; // the upper half means nothing

    static PixelVector Splat(int value) { return {Lanes{} + static_cast<std::uint16_t>(value)}; }
    /// Four bytes, the lowest for red, as 0..255.
    static PixelVector Widen(std::uint32_t bytes) {
        const auto narrow = reinterpret_cast<Bytes>(Words{bytes, 0, 0, 0});
        return {reinterpret_cast<Lanes>(__builtin_shufflevector(
            narrow, Bytes{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23))};
    }
    static PixelVector LoadFour(const std::int16_t* values) {
        std::uint64_t four;
        std::memcpy(&four, values, sizeof four);
        return {reinterpret_cast<Lanes>(Halves{four, 0})};
    }
    void StoreFour(std::int16_t* values) const {
        const std::uint64_t four = Bits();
        std::memcpy(values, &four, sizeof four);
    }
    /// Touches no more than three values in memory; the fourth lane becomes 0.
    static PixelVector LoadThree(const std::int16_t* values) {
        std::uint32_t two;
        std::memcpy(&two, values, sizeof two);
        PixelVector three = {reinterpret_cast<Lanes>(Words{two, 0, 0, 0})};
        three.lanes[2] = static_cast<std::uint16_t>(values[2]);
        return three;
    }
    void StoreThree(std::int16_t* values) const {
        const std::uint32_t two = reinterpret_cast<Words>(lanes)[0];
        std::memcpy(values, &two, sizeof two);
        values[2] = static_cast<std::int16_t>(lanes[2]);
    }

    PixelVector operator+(PixelVector other) const { return {lanes + other.lanes}; }
    PixelVector operator-(PixelVector other) const { return {lanes - other.lanes}; }
    PixelVector operator*(PixelVector other) const { return {lanes * other.lanes}; }
    PixelVector operator^(PixelVector other) const { return {lanes ^ other.lanes}; }
    /// Rounds toward minus infinity.
    PixelVector operator>>(int bits) const {
        return {reinterpret_cast<Lanes>(reinterpret_cast<SignedLanes>(lanes) >> bits)};
    }
    PixelVector ShiftUnsigned(int bits) const { return {lanes >> bits}; }
    PixelVector SplatFourth() const {
        return {__builtin_shufflevector(lanes, lanes, 3, 3, 3, 3, 4, 5, 6, 7)};
    }
    /// The same, hidden from the compiler, which would otherwise regroup sums that are grouped so
    /// that they can run side by side.
    PixelVector Grouped() const {
        PixelVector same = *this;
#if defined(__x86_64__)
        asm("" : "+x"(same.lanes));
#endif
        return same;
    }

    /// Each value clamped to 0..255.
    PixelVector Clamp() const {
        const SignedLanes none = {}, most = none + 255, wide = reinterpret_cast<SignedLanes>(lanes);
        const SignedLanes positive = wide > none ? wide : none;
        return {reinterpret_cast<Lanes>(positive < most ? positive : most)};
    }
    /// The cell of the colour cube, as CellOf; the values are 0..255.
    std::uint32_t Cell() const {
        const std::uint64_t bits = Bits();
        return static_cast<std::uint32_t>((bits & 0xF8) << 7 | (bits >> 14 & 0x3E0) |
                                          (bits >> 35 & 0x1F));
    }

  private:
    std::uint64_t Bits() const {
        return reinterpret_cast<Halves>(lanes)[0];
    }
};

/// Sixteen bytes, all unsigned.
struct ByteVector {
    using Lanes [[gnu::vector_size(16)]] = std::uint8_t;

    Lanes lanes;

    static ByteVector Splat(int value) { return {Lanes{} + static_cast<std::uint8_t>(value)}; }
    static ByteVector Load(const std::uint8_t* bytes) {
        ByteVector loaded;
        std::memcpy(&loaded.lanes, bytes, sizeof loaded.lanes);
        return loaded;
    }
    void Store(std::uint8_t* bytes) const { std::memcpy(bytes, &lanes, sizeof lanes); }
    /// One more, but 255 stays 255.
    ByteVector Next() const { return {Min(Splat(254)).lanes + 1}; }
    ByteVector Min(ByteVector other) const { return {lanes < other.lanes ? lanes : other.lanes}; }
    /// 255 where both are equal, else 0.
    ByteVector Equal(ByteVector other) const {
        return {reinterpret_cast<Lanes>(lanes == other.lanes)};
    }
    /// `yes` where this is 255, `no` where it is 0.
    ByteVector Choose(ByteVector yes, ByteVector no) const {
        return {(lanes & yes.lanes) | (~lanes & no.lanes)};
    }
    /// The lower halves of this and `other`, bytes alternating.
    ByteVector InterleaveLower(ByteVector other) const {
        return {__builtin_shufflevector(lanes, other.lanes, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5,
                                        21, 6, 22, 7, 23)};
    }
    /// The upper halves of this and `other`, bytes alternating.
    ByteVector InterleaveUpper(ByteVector other) const {
        return {__builtin_shufflevector(lanes, other.lanes, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28,
                                        13, 29, 14, 30, 15, 31)};
    }
};

/// Four counts of 32 bits; sums wrap.
struct CountVector {
    using Lanes [[gnu::vector_size(16)]] = std::uint32_t;

    Lanes lanes;

    static CountVector Zero() { return {Lanes{}}; }
    /// All bits set in lanes `first` to `last`, none in the others.
    static CountVector Range(int first, int last) {
        using Signed [[gnu::vector_size(16)]] = std::int32_t;
        const Signed lane = {0, 1, 2, 3};
        return {reinterpret_cast<Lanes>((lane >= first) & (lane <= last))};
    }
    static CountVector Load(const std::uint32_t* counts) {
        CountVector loaded;
        std::memcpy(&loaded.lanes, counts, sizeof loaded.lanes);
        return loaded;
    }
    void Store(std::int32_t* sums) const { std::memcpy(sums, &lanes, sizeof lanes); }
    std::int32_t Sum() const {
        const Lanes pairs = lanes + __builtin_shufflevector(lanes, lanes, 2, 3, 0, 1);
        return static_cast<std::int32_t>(pairs[0] + pairs[1]);
    }
    CountVector operator+(CountVector other) const { return {lanes + other.lanes}; }
    CountVector operator&(CountVector other) const { return {lanes & other.lanes}; }
};
