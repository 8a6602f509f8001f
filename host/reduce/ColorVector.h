// The few vector operations of this folder's pixel loops: SSE2, which every x86-64 processor has,
// or plain loops on other processors and where GIF89_PORTABLE asks for them. Both give the same
// bits. Internal to this folder.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace gif89 {

/// A key is kKeyMark | squared distance << kKeyBits | index. The mark makes it the pattern of bits
/// of a positive, ordinary float, and such floats are in the order of their patterns.
constexpr int kKeyBits = 8;
constexpr std::int32_t kKeyMark = 1 << 30;

/// Entries side by side: red and green of four entries, blue and zero of four, and the keys of four
/// at distance 0.
struct FourEntries {
    alignas(16) std::int16_t redGreen[8];
    std::int16_t blue[8];
    std::int32_t key[4];
};

} // namespace gif89

#if defined(__x86_64__) && !defined(GIF89_PORTABLE)
#include <emmintrin.h>

namespace gif89 {

/// Red, green, blue and a fourth value, 16 bits each; all arithmetic wraps.
struct ColorVector {
    __m128i lanes; // the upper half means nothing

    static ColorVector Zero() { return {_mm_setzero_si128()}; }
    static ColorVector Splat(int value) { return {_mm_set1_epi16(static_cast<short>(value))}; }
    /// Reads four values.
    static ColorVector Load(const std::int16_t* values) {
        return {_mm_loadl_epi64(reinterpret_cast<const __m128i*>(values))};
    }
    void Store(std::int16_t* values) const {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(values), lanes);
    }
    /// Three bytes, the lowest for the first lane, times `scale`; the fourth byte is 0.
    static ColorVector Widen(std::uint32_t bytes, int shift) {
        const __m128i wide =
            _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(bytes)), _mm_setzero_si128());
        return {_mm_slli_epi16(wide, shift)};
    }
    ColorVector operator+(ColorVector other) const { return {_mm_add_epi16(lanes, other.lanes)}; }
    ColorVector operator-(ColorVector other) const { return {_mm_sub_epi16(lanes, other.lanes)}; }
    /// Rounds toward minus infinity.
    ColorVector operator>>(int bits) const { return {_mm_srai_epi16(lanes, bits)}; }
    /// The product's upper 16 bits.
    ColorVector TimesFraction(ColorVector other) const {
        return {_mm_mulhi_epi16(lanes, other.lanes)};
    }
    ColorVector Clamp(ColorVector least, ColorVector most) const {
        return {_mm_min_epi16(_mm_max_epi16(lanes, least.lanes), most.lanes)};
    }
    /// The cell of 32 x 32 x 32 in which a colour of levels lies, red in its upper bits.
    std::uint32_t Cell() const {
        const __m128i parts =
            _mm_madd_epi16(_mm_srli_epi16(lanes, 3), _mm_set_epi16(0, 0, 0, 0, 0, 1, 32, 1024));
        return static_cast<std::uint32_t>(
            _mm_cvtsi128_si32(_mm_add_epi32(parts, _mm_shuffle_epi32(parts, 0x55))));
    }
};

/// Searches groups of entries for the one that is nearest to a colour.
class NearestSearch {
  public:
    explicit NearestSearch(ColorVector color)
        : redGreen(_mm_shuffle_epi32(color.lanes, 0x00)),
          blue(_mm_shuffle_epi32(color.lanes, 0x55)) {}

    /// The key of the nearest of `groups` groups, which are an even number, at least two; of
    /// entries equally near, the one with the lowest index.
    std::int32_t Find(const FourEntries* group, int groups) const {
        __m128 least = _mm_min_ps(Keys(group[0]), Keys(group[1]));
        for (int n = 2; n < groups; n += 2)
            least = _mm_min_ps(least, _mm_min_ps(Keys(group[n]), Keys(group[n + 1])));
        least = _mm_min_ps(least, _mm_shuffle_ps(least, least, 0x4E));
        least = _mm_min_ps(least, _mm_shuffle_ps(least, least, 0xB1));
        return _mm_cvtsi128_si32(_mm_castps_si128(least));
    }

  private:
    // As floats, for which SSE2 has a minimum; it has none for integers of 32 bits.
    __m128 Keys(const FourEntries& group) const {
        const auto load = [](const void* from) {
            return _mm_load_si128(static_cast<const __m128i*>(from));
        };
        const __m128i a = _mm_sub_epi16(load(group.redGreen), redGreen);
        const __m128i b = _mm_sub_epi16(load(group.blue), blue);
        const __m128i squares = _mm_add_epi32(_mm_madd_epi16(a, a), _mm_madd_epi16(b, b));
        return _mm_castsi128_ps(_mm_or_si128(_mm_slli_epi32(squares, kKeyBits), load(group.key)));
    }

    __m128i redGreen, blue;
};

} // namespace gif89

#else

namespace gif89 {

struct ColorVector {
    std::int16_t lanes[4];

    template <class Lane> static ColorVector Make(Lane lane) {
        const auto narrow = [](auto value) { return static_cast<std::int16_t>(value); };
        return {{narrow(lane(0)), narrow(lane(1)), narrow(lane(2)), narrow(lane(3))}};
    }
    static ColorVector Zero() { return {}; }
    static ColorVector Splat(int value) {
        return Make([=](int) { return value; });
    }
    static ColorVector Load(const std::int16_t* values) {
        return Make([=](int i) { return values[i]; });
    }
    void Store(std::int16_t* values) const { std::copy_n(lanes, 4, values); }
    static ColorVector Widen(std::uint32_t bytes, int shift) {
        return Make([=](int i) { return (bytes >> 8 * i & 0xFF) << shift; });
    }
    ColorVector operator+(ColorVector other) const {
        return Make([&](int i) { return lanes[i] + other.lanes[i]; });
    }
    ColorVector operator-(ColorVector other) const {
        return Make([&](int i) { return lanes[i] - other.lanes[i]; });
    }
    ColorVector operator>>(int bits) const {
        return Make([=, this](int i) { return lanes[i] >> bits; });
    }
    ColorVector TimesFraction(ColorVector other) const {
        return Make([&](int i) { return lanes[i] * other.lanes[i] >> 16; });
    }
    ColorVector Clamp(ColorVector least, ColorVector most) const {
        return Make(
            [&](int i) { return std::min(std::max(lanes[i], least.lanes[i]), most.lanes[i]); });
    }
    std::uint32_t Cell() const {
        return static_cast<std::uint32_t>((lanes[0] >> 3) * 1024 + (lanes[1] >> 3) * 32 +
                                          (lanes[2] >> 3));
    }
};

class NearestSearch {
  public:
    explicit NearestSearch(ColorVector theColor) : color(theColor) {}

    std::int32_t Find(const FourEntries* group, int groups) const {
        std::int32_t least = Key(*group, 0);
        for (int n = 0; n < groups * 4; ++n) least = std::min(least, Key(group[n / 4], n % 4));
        return least;
    }

  private:
    std::int32_t Key(const FourEntries& group, int n) const {
        const int red = group.redGreen[2 * n] - color.lanes[0],
                  green = group.redGreen[2 * n + 1] - color.lanes[1],
                  blue = group.blue[2 * n] - color.lanes[2];
        return (red * red + green * green + blue * blue) << kKeyBits | group.key[n];
    }

    ColorVector color;
};

} // namespace gif89

#endif
