// A sorted table of the picture's colours, searched at a fixed depth, and before it a small memory
// of colours that need no search.
#include "ExactPalette.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

constexpr int kSlots = 256;
constexpr std::int32_t kEmptySlot = -1; // below every colour in signed comparison
constexpr short kTooManyColors = 1;

std::int32_t PackedPixel(const std::uint8_t* pixel) {
    return pixel[0] << 16 | pixel[1] << 8 | pixel[2];
}

// The last slot whose colour is not below `color`. White in slot 0 bounds every colour, so there
// always is one; the eight probes compile to selections instead of branches.
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

constexpr int kGroup = 8; // pixels, whose bytes are three words of eight
constexpr int kGroupBytes = kGroup * 3;

// Colours that are in the table already, each in one place that is computed from it.
class SeenColors {
  public:
    SeenColors() { std::fill_n(colors, kPlaces, kNoColor); }

    void Put(std::int32_t color) { *Place(color) = color; }

    // A group's pixels are looked up all at once, before anything depends on an answer; the plain
    // way is to search the table for every pixel.
    bool HaveGroup(const std::uint8_t* pixels) const {
        std::int32_t differences = 0;
        for (int i = 0; i < kGroup; ++i) differences |= Difference(PackedPixel(pixels + 3 * i));
        return differences == 0;
    }
    bool Have(std::int32_t color) const { return Difference(color) == 0; }

  private:
    std::int32_t Difference(std::int32_t color) const {
        return colors[PlaceOf(color)] ^ color;
    }
    static std::uint32_t PlaceOf(std::int32_t color) {
        return static_cast<std::uint32_t>(color) * 2654435761u >> (32 - kPlaceBits);
    }

    static constexpr int kPlaceBits = 12; // few of 256 colours get in each other's way
    std::int32_t colors[1 << kPlaceBits];
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
    auto count = static_cast<std::int16_t>(info->count);
    std::int32_t previous = kEmptySlot; // equal neighbours need no search
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* pixel = data + std::ptrdiff_t{y} * rowBytes;
        for (int x = 0; x < columns; ++x, pixel += 3) {
            const std::int32_t color = PackedPixel(pixel);
            if (color == previous) continue;
            previous = color;
            const int slot = FindSlot(info->colors, color);
            if (info->colors[slot] == color) continue;
            if (count < kSlots) InsertAt(info->colors, slot + 1, color);
            if (++count > kSlots) return kTooManyColors;
        }
    }
    info->count = count;
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
