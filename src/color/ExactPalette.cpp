// A sorted table of the picture's colours, found by a binary search of eight steps, and in front of
// it a small cache of colours that are in the table already.
#include "ExactPalette.h"

#include "PixelVector.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace {

constexpr int kSlots = 256;
constexpr std::int32_t kEmptySlot = -1; // below every colour in signed comparison
constexpr short kTooManyColors = 1;

std::int32_t PackedPixel(const std::uint8_t* pixel) {
    return pixel[0] << 16 | pixel[1] << 8 | pixel[2];
}

// The last slot whose colour is not below `color`. There always is one, because white is in slot 0
// and no colour is above it. The compiler turns the eight probes into conditional moves.
int FindSlot(const std::int32_t* colors, std::int32_t color) {
    int slot = 0;
    const auto probe = [&](int step) { slot += colors[slot + step] >= color ? step : 0; };
    probe(128), probe(64), probe(32), probe(16), probe(8), probe(4), probe(2), probe(1);
    return slot;
}

// Puts `color` into `slot` and moves the later colours one down, up to the first empty slot.
void InsertAt(std::int32_t* colors, int slot, std::int32_t color) {
    for (; slot < kSlots && color != kEmptySlot; ++slot) std::swap(colors[slot], color);
}

constexpr int kGroup = 8; // pixels
constexpr int kGroupBytes = kGroup * 3;

// Compares two groups of pixels as three 64-bit words each.
bool SameGroup(const std::uint8_t* pixels, const std::uint8_t* others) {
    std::uint64_t a[3], b[3];
    std::memcpy(a, pixels, kGroupBytes);
    std::memcpy(b, others, kGroupBytes);
    return ((a[0] ^ b[0]) | (a[1] ^ b[1]) | (a[2] ^ b[2])) == 0;
}

// A cache of colours that are in the table already. A colour's place is a hash of it, and a later
// colour may overwrite an earlier one. Colours are stored as they are loaded from memory, red in
// the lowest byte.
class SeenColors {
  public:
    SeenColors() { std::fill_n(colors, 1 << kPlaceBits, kNoColor); }

    // Stores the colour. Returns true when it was in the cache already.
    bool Put(std::uint32_t color) { return std::exchange(colors[PlaceOf(color)], color) == color; }

    // Whether all colours of a group are in the cache. There is one branch for the whole group,
    // which is faster than one for each pixel.
    bool HaveGroup(const std::uint8_t* pixels) const {
        std::uint32_t differences = 0;
        for (int offset = 0; offset < kGroupBytes - 3; offset += 3)
            differences |= Difference(LoadFourBytes(pixels + offset) & 0xFFFFFF);
        // The last pixel is loaded from one byte before it, so that no byte behind the group is
        // read.
        return (differences | Difference(LoadFourBytes(pixels + kGroupBytes - 4) >> 8)) == 0;
    }

  private:
    static std::uint32_t PlaceOf(std::uint32_t color) {
        return color * 2654435761u >> (32 - kPlaceBits);
    }
    std::uint32_t Difference(std::uint32_t color) const { return colors[PlaceOf(color)] ^ color; }

    static constexpr std::uint32_t kNoColor = ~0u;
    static constexpr int kPlaceBits = 12; // large enough that few of 256 colours collide
    std::uint32_t colors[1 << kPlaceBits];
};

// Records pixels in the table of `info`, whose count it leaves to the caller.
class ColorRecorder {
  public:
    explicit ColorRecorder(ExactInfo* exactInfo)
        : count(static_cast<std::int16_t>(exactInfo->count)), colors(exactInfo->colors) {}

    // Returns false as soon as there are too many colours. A group that equals the one to its left,
    // or the one above it if there is a row above, is skipped: its colours are recorded already.
    bool AddRow(const std::uint8_t* row, const std::uint8_t* rowAbove, int columns) {
        const int bytes = columns * 3;
        int at = 0;
        for (; bytes - at >= kGroupBytes; at += kGroupBytes) {
            const std::uint8_t* const group = row + at;
            if (at > 0 && SameGroup(group, group - kGroupBytes)) continue;
            if (rowAbove && SameGroup(group, rowAbove + at)) continue;
            if (!seen.HaveGroup(group) && !AddPixels(group, group + kGroupBytes)) return false;
        }
        return AddPixels(row + at, row + bytes);
    }
    std::int16_t Count() const { return count; }

  private:
    bool AddPixels(const std::uint8_t* pixel, const std::uint8_t* end) {
        for (; pixel < end; pixel += 3) {
            if (seen.Put(PackRGB(pixel[2], pixel[1], pixel[0]))) continue;
            const std::int32_t color = PackedPixel(pixel);
            const int slot = FindSlot(colors, color);
            if (colors[slot] == color) continue;
            if (count < kSlots) InsertAt(colors, slot + 1, color);
            if (++count > kSlots) return false;
        }
        return true;
    }

    SeenColors seen;
    std::int16_t count;
    std::int32_t* colors;
};

} // namespace

void ExactStart(ExactInfo* info) {
    info->count = 2;
    std::fill_n(info->colors, kSlots, kEmptySlot);
    info->colors[0] = 0xFFFFFF;
    info->colors[1] = 0x000000;
}

short ExactCount(const Rect* area, std::int32_t rowBytes, const std::uint8_t* data,
                 ExactInfo* info) {
    const int rows = area->bottom - area->top;
    const int columns = area->right - area->left;
    ColorRecorder recorder(info);
    const std::uint8_t* rowAbove = nullptr;
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* const row = data + std::ptrdiff_t{y} * rowBytes;
        if (!recorder.AddRow(row, rowAbove, columns)) return kTooManyColors;
        rowAbove = row;
    }
    info->count = recorder.Count();
    return 0;
}

void MakeExactTable(const ExactInfo* info, RGBLookUpTable* table) {
    *table = {};
    const int count = std::min(info->count, std::int32_t{kSlots});
    for (int i = 0; i < count; ++i)
        SetTableEntry(*table, i, UnpackColor(static_cast<PackedColor>(info->colors[i])));
}

void ExactConvert(const ExactInfo* info, const std::uint8_t* src, std::uint8_t* dst, short rows,
                  short columns, std::int32_t srcRowBytes, std::int32_t dstRowBytes) {
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* pixel = src + std::ptrdiff_t{y} * srcRowBytes;
        std::uint8_t* index = dst + std::ptrdiff_t{y} * dstRowBytes;
        for (int x = 0; x < columns; ++x, pixel += 3)
            index[x] = static_cast<std::uint8_t>(FindSlot(info->colors, PackedPixel(pixel)));
    }
}
