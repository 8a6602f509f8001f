#include "CountColors.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <set>

namespace gif89 {
namespace {

struct FreeBlock {
    void operator()(std::uint64_t* block) const { std::free(block); }
};

/// Counts colours, one bit for each of the 2^24.
class ColorCounter {
  public:
    ColorCounter() {
        if (!seen) throw std::bad_alloc();
    }
    void Add(PackedColor color) {
        std::uint64_t& word = seen[color / 64];
        const std::uint64_t bit = std::uint64_t{1} << color % 64;
        if (word & bit) return; // as a rule, which a processor foresees
        word |= bit;
        ++count;
    }
    std::int64_t Count() const { return count; }

  private:
    // Comes cleared from the system, page by page as it is touched; small pictures touch little.
    std::unique_ptr<std::uint64_t[], FreeBlock> seen{
        static_cast<std::uint64_t*>(std::calloc((1U << 24) / 64, sizeof(std::uint64_t)))};
    std::int64_t count = 0;
};

std::int64_t CountIndexedColors(const Picture& picture) {
    const std::uint8_t* const opacity = OpacityOf(picture);
    bool used[256] = {};
    for (std::size_t n = 0; n < picture.PixelCount(); ++n)
        if (!opacity || opacity[n] > 0) used[picture.pixels[n]] = true;
    std::set<PackedColor> colors;
    for (int index = 0; index < 256; ++index)
        if (used[index]) colors.insert(PackColor(TableEntry(picture.table, index)));
    return static_cast<std::int64_t>(colors.size());
}

template <int kPixelBytes> std::int64_t CountTrueColors(const Picture& picture) {
    ColorCounter colors;
    const std::uint8_t* pixel = picture.pixels.get();
    const std::uint8_t* const end = pixel + picture.PixelBytes();
    for (; pixel < end; pixel += kPixelBytes)
        if (kPixelBytes == 3 || pixel[3] > 0) colors.Add(PackRGB(pixel[0], pixel[1], pixel[2]));
    return colors.Count();
}

} // namespace

std::int64_t CountColors(const Picture& picture) {
    if (picture.visibleColors) return *picture.visibleColors;
    if (picture.kind == Picture::Kind::indexed) return CountIndexedColors(picture);
    return picture.kind == Picture::Kind::rgb ? CountTrueColors<3>(picture)
                                              : CountTrueColors<4>(picture);
}

} // namespace gif89
