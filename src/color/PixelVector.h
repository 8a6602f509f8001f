// The few vector operations that the colour loops need: SSE2, which every x86-64 processor has, or
// plain loops on other processors and where GIF89_PORTABLE asks for them. Both give the same bits.
// Internal to this folder.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

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
/// Reads kFourCellsBytes bytes, more than the 12 of the pixels.
constexpr int kFourCellsBytes = 16;
FourCells FindFourCells(const std::uint8_t* rgb);

#if defined(__x86_64__) && !defined(GIF89_PORTABLE)
#include <emmintrin.h>

inline FourCells FindFourCells(const std::uint8_t* rgb) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rgb));
    const __m128i firstTwo = _mm_unpacklo_epi32(bytes, _mm_srli_si128(bytes, 3));
    const __m128i lastTwo = _mm_unpacklo_epi32(_mm_srli_si128(bytes, 6), _mm_srli_si128(bytes, 9));
    const __m128i colors = _mm_unpacklo_epi64(firstTwo, lastTwo);
    const __m128i red = _mm_slli_epi32(_mm_and_si128(colors, _mm_set1_epi32(0xF8)), 7);
    const __m128i green = _mm_and_si128(_mm_srli_epi32(colors, 6), _mm_set1_epi32(0x3E0));
    const __m128i blue = _mm_and_si128(_mm_srli_epi32(colors, 19), _mm_set1_epi32(0x1F));
    const __m128i cells = _mm_or_si128(_mm_or_si128(red, green), blue);
    return {static_cast<std::uint64_t>(_mm_cvtsi128_si64(cells)),
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(cells, cells)))};
}

/// Red, green, blue and a fourth value, 16 bits each; all arithmetic wraps.
struct PixelVector {
    __m128i lanes; // the upper half is unused

    static PixelVector Splat(int value) { return {_mm_set1_epi16(static_cast<short>(value))}; }
    /// Four bytes, the lowest for red, as 0..255.
    static PixelVector Widen(std::uint32_t bytes) {
        return {_mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(bytes)), _mm_setzero_si128())};
    }
    static PixelVector LoadFour(const std::int16_t* values) {
        return {_mm_loadl_epi64(reinterpret_cast<const __m128i*>(values))};
    }
    void StoreFour(std::int16_t* values) const {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(values), lanes);
    }
    /// Touches no more than three values in memory; the fourth lane becomes 0.
    static PixelVector LoadThree(const std::int16_t* values) {
        std::int32_t two;
        std::memcpy(&two, values, sizeof two);
        return {_mm_insert_epi16(_mm_cvtsi32_si128(two), values[2], 2)};
    }
    void StoreThree(std::int16_t* values) const {
        const std::int32_t two = _mm_cvtsi128_si32(lanes);
        std::memcpy(values, &two, sizeof two);
        values[2] = static_cast<std::int16_t>(_mm_extract_epi16(lanes, 2));
    }

    PixelVector operator+(PixelVector other) const { return {_mm_add_epi16(lanes, other.lanes)}; }
    PixelVector operator-(PixelVector other) const { return {_mm_sub_epi16(lanes, other.lanes)}; }
    PixelVector operator*(PixelVector other) const { return {_mm_mullo_epi16(lanes, other.lanes)}; }
    PixelVector operator^(PixelVector other) const { return {_mm_xor_si128(lanes, other.lanes)}; }
    /// Rounds toward minus infinity.
    PixelVector operator>>(int bits) const { return {_mm_srai_epi16(lanes, bits)}; }
    PixelVector ShiftUnsigned(int bits) const { return {_mm_srli_epi16(lanes, bits)}; }
    PixelVector SplatFourth() const { return {_mm_shufflelo_epi16(lanes, 0xFF)}; }
    /// The same value, computed where the compiler cannot look into it. Otherwise it would reorder
    /// a sum whose parts are grouped so that the processor can compute them at the same time.
    PixelVector Grouped() const {
        PixelVector same = *this;
        asm("" : "+x"(same.lanes));
        return same;
    }

    /// Each value clamped to 0..255.
    PixelVector Clamp() const {
        return {_mm_unpacklo_epi8(_mm_packus_epi16(lanes, lanes), _mm_setzero_si128())};
    }
    /// The same as bytes, in the order that Widen takes.
    std::uint32_t ClampToBytes() const {
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(lanes, lanes)));
    }
};

/// Sixteen bytes, all unsigned.
struct ByteVector {
    __m128i lanes;

    static ByteVector Splat(int value) { return {_mm_set1_epi8(static_cast<char>(value))}; }
    static ByteVector Load(const std::uint8_t* bytes) {
        return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))};
    }
    void Store(std::uint8_t* bytes) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), lanes);
    }
    ByteVector AddSaturated(ByteVector other) const { return {_mm_adds_epu8(lanes, other.lanes)}; }
    ByteVector Min(ByteVector other) const { return {_mm_min_epu8(lanes, other.lanes)}; }
    /// 255 where both are equal, else 0.
    ByteVector Equal(ByteVector other) const { return {_mm_cmpeq_epi8(lanes, other.lanes)}; }
    /// `yes` where this is 255, `no` where it is 0.
    ByteVector Choose(ByteVector yes, ByteVector no) const {
        return {_mm_or_si128(_mm_and_si128(lanes, yes.lanes), _mm_andnot_si128(lanes, no.lanes))};
    }
    /// The lower halves of this and `other`, bytes alternating.
    ByteVector InterleaveLower(ByteVector other) const {
        return {_mm_unpacklo_epi8(lanes, other.lanes)};
    }
    /// The upper halves of this and `other`, bytes alternating.
    ByteVector InterleaveUpper(ByteVector other) const {
        return {_mm_unpackhi_epi8(lanes, other.lanes)};
    }
};

/// Four counts of 32 bits; sums wrap.
struct CountVector {
    __m128i lanes;

    static CountVector Zero() { return {_mm_setzero_si128()}; }
    /// All bits set in lanes `first` to `last`, none in the others.
    static CountVector Range(int first, int last) {
        const __m128i lane = _mm_setr_epi32(0, 1, 2, 3);
        return {_mm_andnot_si128(_mm_or_si128(_mm_cmplt_epi32(lane, _mm_set1_epi32(first)),
                                              _mm_cmpgt_epi32(lane, _mm_set1_epi32(last))),
                                 _mm_set1_epi32(-1))};
    }
    static CountVector Load(const std::uint32_t* counts) {
        return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(counts))};
    }
    void Store(std::int32_t* sums) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sums), lanes);
    }
    std::int32_t Sum() const {
        const __m128i pairs = _mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, 0x4E));
        return _mm_cvtsi128_si32(_mm_add_epi32(pairs, _mm_shuffle_epi32(pairs, 0xB1)));
    }
    CountVector operator+(CountVector other) const { return {_mm_add_epi32(lanes, other.lanes)}; }
    CountVector operator&(CountVector other) const { return {_mm_and_si128(lanes, other.lanes)}; }
};

#else

inline FourCells FindFourCells(const std::uint8_t* rgb) {
    const auto cell = [rgb](std::ptrdiff_t i) {
        return std::uint64_t{CellOf(LoadFourBytes(rgb + 3 * i))};
    };
    return {cell(0) | cell(1) << 32, cell(2) | cell(3) << 32};
}

struct PixelVector {
    std::int16_t lanes[4];

    template <class Lane> static PixelVector Make(Lane lane) {
        const auto narrow = [](auto value) { return static_cast<std::int16_t>(value); };
        return {{narrow(lane(0)), narrow(lane(1)), narrow(lane(2)), narrow(lane(3))}};
    }
    static PixelVector Splat(int value) {
        return Make([=](int) { return value; });
    }
    static PixelVector Widen(std::uint32_t bytes) {
        return Make([=](int i) { return bytes >> 8 * i & 0xFF; });
    }
    static PixelVector LoadFour(const std::int16_t* values) {
        return Make([=](int i) { return values[i]; });
    }
    void StoreFour(std::int16_t* values) const { std::copy_n(lanes, 4, values); }
    static PixelVector LoadThree(const std::int16_t* values) {
        return {{values[0], values[1], values[2], 0}};
    }
    void StoreThree(std::int16_t* values) const { std::copy_n(lanes, 3, values); }

    PixelVector operator+(PixelVector other) const {
        return Make([&](int i) { return lanes[i] + other.lanes[i]; });
    }
    PixelVector operator-(PixelVector other) const {
        return Make([&](int i) { return lanes[i] - other.lanes[i]; });
    }
    PixelVector operator*(PixelVector other) const {
        return Make([&](int i) { return lanes[i] * other.lanes[i]; });
    }
    PixelVector operator^(PixelVector other) const {
        return Make([&](int i) { return lanes[i] ^ other.lanes[i]; });
    }
    PixelVector operator>>(int bits) const {
        return Make([=, this](int i) { return lanes[i] >> bits; });
    }
    PixelVector ShiftUnsigned(int bits) const {
        return Make([=, this](int i) { return static_cast<std::uint16_t>(lanes[i]) >> bits; });
    }
    PixelVector SplatFourth() const { return Splat(lanes[3]); }
    PixelVector Grouped() const { return *this; }
    PixelVector Clamp() const {
        return Make([&](int i) { return std::clamp<int>(lanes[i], 0, 255); });
    }
    std::uint32_t ClampToBytes() const {
        const auto byte = [&](int i) {
            return static_cast<std::uint32_t>(std::clamp<int>(lanes[i], 0, 255)) << 8 * i;
        };
        return byte(0) | byte(1) | byte(2) | byte(3);
    }
};

struct ByteVector {
    std::uint8_t lanes[16];

    template <class Lane> static ByteVector Make(Lane lane) {
        ByteVector made;
        for (int i = 0; i < 16; ++i) made.lanes[i] = static_cast<std::uint8_t>(lane(i));
        return made;
    }
    static ByteVector Splat(int value) {
        return Make([=](int) { return value; });
    }
    static ByteVector Load(const std::uint8_t* bytes) {
        return Make([=](int i) { return bytes[i]; });
    }
    void Store(std::uint8_t* bytes) const { std::copy_n(lanes, 16, bytes); }
    ByteVector AddSaturated(ByteVector other) const {
        return Make([&](int i) { return std::min(lanes[i] + other.lanes[i], 255); });
    }
    ByteVector Min(ByteVector other) const {
        return Make([&](int i) { return std::min(lanes[i], other.lanes[i]); });
    }
    ByteVector Equal(ByteVector other) const {
        return Make([&](int i) { return lanes[i] == other.lanes[i] ? 255 : 0; });
    }
    ByteVector Choose(ByteVector yes, ByteVector no) const {
        return Make([&](int i) { return lanes[i] != 0 ? yes.lanes[i] : no.lanes[i]; });
    }
    ByteVector InterleaveLower(ByteVector other) const {
        return Make([&](int i) { return i & 1 ? other.lanes[i / 2] : lanes[i / 2]; });
    }
    ByteVector InterleaveUpper(ByteVector other) const {
        return Make([&](int i) { return i & 1 ? other.lanes[8 + i / 2] : lanes[8 + i / 2]; });
    }
};

struct CountVector {
    std::uint32_t lanes[4];

    template <class Lane> static CountVector Make(Lane lane) {
        CountVector made;
        for (int i = 0; i < 4; ++i) made.lanes[i] = lane(i);
        return made;
    }
    static CountVector Zero() { return {}; }
    static CountVector Range(int first, int last) {
        return Make([=](int i) { return i < first || i > last ? 0u : ~0u; });
    }
    static CountVector Load(const std::uint32_t* counts) {
        return Make([=](int i) { return counts[i]; });
    }
    void Store(std::int32_t* sums) const {
        for (int i = 0; i < 4; ++i) sums[i] = static_cast<std::int32_t>(lanes[i]);
    }
    std::int32_t Sum() const {
        return static_cast<std::int32_t>(lanes[0] + lanes[1] + lanes[2] + lanes[3]);
    }
    CountVector operator+(CountVector other) const {
        return Make([&](int i) { return lanes[i] + other.lanes[i]; });
    }
    CountVector operator&(CountVector other) const {
        return Make([&](int i) { return lanes[i] & other.lanes[i]; });
    }
};

#endif
