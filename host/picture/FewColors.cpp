#include "FewColors.h"

#include <algorithm>
#include <array>
#include <utility>

namespace gif89 {
namespace {

/// The colours met so far, in order, and where to find them again.
class ColorIndex {
  public:
    ColorIndex() { entryAt.fill(kFree); }
    /// The entry of a colour, a new one if need be; -1 when there are 256 others already.
    int EntryOf(PackedColor color) {
        std::size_t place = (color * 2654435761U) >> 23;
        for (; entryAt[place] != kFree; place = (place + 1) % kPlaces)
            if (colors[entryAt[place]] == color) return entryAt[place];
        if (count == kMostColors) return -1;
        entryAt[place] = static_cast<std::uint16_t>(count);
        colors[static_cast<std::size_t>(count)] = color;
        return count++;
    }
    int Count() const { return count; }
    PackedColor Color(int entry) const { return colors[static_cast<std::size_t>(entry)]; }

  private:
    static constexpr std::size_t kPlaces = 512; // twice as many as can be taken
    static constexpr std::uint16_t kFree = 0xFFFF;
    std::array<std::uint16_t, kPlaces> entryAt;
    std::array<PackedColor, kMostColors> colors = {};
    int count = 0;
};

template <int kPixelBytes>
bool AddColors(const Picture& picture, ColorIndex& index, FewColors& few) {
    const std::uint8_t* pixel = picture.pixels.get();
    const std::uint8_t* const end = pixel + picture.PixelBytes();
    PackedColor last = ~0U; // no colour
    for (; pixel < end; pixel += kPixelBytes) {
        if constexpr (kPixelBytes == 4) {
            if (pixel[3] == 0) {
                few.transparent = true;
                continue;
            }
            if (pixel[3] != 255) return false;
        }
        const PackedColor color = PackRGB(pixel[0], pixel[1], pixel[2]);
        if (color == last) continue;
        last = color;
        if (index.EntryOf(color) < 0) return false;
    }
    return true;
}

template <int kPixelBytes>
void FillIndices(const Picture& picture, ColorIndex& index, std::uint8_t* indices,
                 std::uint8_t* opacities) {
    const auto hidden = static_cast<std::uint8_t>(index.Count());
    const std::uint8_t* pixel = picture.pixels.get();
    const std::uint8_t* const end = pixel + picture.PixelBytes();
    for (; pixel < end; pixel += kPixelBytes) {
        const bool visible = kPixelBytes == 3 || pixel[kPixelBytes - 1] != 0;
        *indices++ =
            visible
                ? static_cast<std::uint8_t>(index.EntryOf(PackRGB(pixel[0], pixel[1], pixel[2])))
                : hidden;
        if (opacities) *opacities++ = visible ? 255 : 0;
    }
}

PackedColor ColorOf(const Picture& picture, const std::uint8_t* pixel) {
    return picture.kind == Picture::Kind::indexed ? PackColor(TableEntry(picture.table, *pixel))
                                                  : PackRGB(pixel[0], pixel[1], pixel[2]);
}

} // namespace

std::optional<FewColors> FindFewColors(const Picture& picture) {
    FewColors few;
    ColorIndex index;
    const bool fits = picture.kind == Picture::Kind::rgb ? AddColors<3>(picture, index, few)
                                                         : AddColors<4>(picture, index, few);
    few.count = index.Count();
    if (!fits || few.Entries() > kMostColors) return std::nullopt;
    for (int entry = 0; entry < few.count; ++entry)
        SetTableEntry(few.table, entry, UnpackColor(index.Color(entry)));
    return few;
}

void MakeIndexed(Picture& picture, const FewColors& few) {
    Picture made = MakePicture(Picture::Kind::indexed, picture.rows, picture.columns);
    made.table = few.table;
    made.colors = few.Entries();
    std::uint8_t* const opacities =
        few.transparent ? AddChannel(made, kTransparencyChannel) : nullptr;
    ColorIndex index;
    for (int entry = 0; entry < few.count; ++entry)
        index.EntryOf(PackColor(TableEntry(few.table, entry)));
    if (picture.kind == Picture::Kind::rgbAlpha)
        FillIndices<4>(picture, index, made.pixels.get(), opacities);
    else
        FillIndices<3>(picture, index, made.pixels.get(), opacities);
    std::move(picture.channels.begin(), picture.channels.end(), std::back_inserter(made.channels));
    made.comment = std::move(picture.comment);
    made.notes = std::move(picture.notes);
    made.notes.madeIndexed = true;
    made.visibleColors = few.count;
    picture = std::move(made);
}

bool FitsExactPalette(const Picture& picture) {
    ColorIndex index;
    for (const PackedColor always : {0xFFFFFFU, 0U}) index.EntryOf(always);
    const std::ptrdiff_t step = picture.BytesPerPixel();
    const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    for (const std::uint8_t* pixel = picture.pixels.get(); pixel < end; pixel += step)
        if (index.EntryOf(ColorOf(picture, pixel)) < 0) return false;
    return index.Count() < kMostColors || !HasOpacity(picture);
}

} // namespace gif89
