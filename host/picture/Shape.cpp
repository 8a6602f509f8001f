#include "Shape.h"

#include "Problem.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <optional>
#include <utility>

namespace gif89 {
namespace {

constexpr int kMostColors = 256;

/// The colours met so far, in order, and where to find them again.
class ColorIndex {
  public:
    /// The entry of a colour, a new one if need be; -1 when there are 256 others already.
    int EntryOf(std::uint32_t color) {
        std::size_t place = (color * 2654435761U) >> 23;
        for (; entryAt[place] != kFree; place = (place + 1) % kPlaces)
            if (colors[entryAt[place]] == color) return entryAt[place];
        if (count == kMostColors) return -1;
        entryAt[place] = static_cast<std::uint16_t>(count);
        colors[static_cast<std::size_t>(count)] = color;
        return count++;
    }
    int Count() const { return count; }
    std::uint32_t Color(int entry) const { return colors[static_cast<std::size_t>(entry)]; }

  private:
    static constexpr std::size_t kPlaces = 512; // twice as many as can be taken
    static constexpr std::uint16_t kFree = 0xFFFF;
    std::array<std::uint16_t, kPlaces> entryAt = [] {
        std::array<std::uint16_t, kPlaces> free;
        free.fill(kFree);
        return free;
    }();
    std::array<std::uint32_t, kMostColors> colors = {};
    int count = 0;
};

/// The colours of a picture's opaque pixels; none when they are too many for one table or some
/// pixel is neither opaque nor fully transparent.
struct FewColors {
    ColorIndex index;
    bool transparent = false;
};

template <int bytesPerPixel> std::optional<FewColors> FindFewColors(const Picture& picture) {
    FewColors found;
    const std::uint8_t* pixel = picture.pixels.get();
    const std::uint8_t* const end = pixel + picture.PixelBytes();
    std::uint32_t last = ~0U; // no colour
    for (; pixel < end; pixel += bytesPerPixel) {
        if constexpr (bytesPerPixel == 4) {
            if (pixel[3] == 0) {
                found.transparent = true;
                continue;
            }
            if (pixel[3] != 255) return std::nullopt;
        }
        const std::uint32_t color = PackColor({0, pixel[0], pixel[1], pixel[2]});
        if (color == last) continue;
        last = color;
        if (found.index.EntryOf(color) < 0) return std::nullopt;
    }
    if (found.transparent && found.index.Count() == kMostColors) return std::nullopt;
    return found;
}

std::optional<FewColors> FindFewColors(const Picture& picture) {
    return picture.kind == Picture::Kind::rgb ? FindFewColors<3>(picture)
                                              : FindFewColors<4>(picture);
}

template <int bytesPerPixel>
void FillIndices(const Picture& picture, FewColors& few, std::uint8_t* indices,
                 std::uint8_t* opacities) {
    const auto hidden = static_cast<std::uint8_t>(few.index.Count());
    const std::uint8_t* pixel = picture.pixels.get();
    const std::uint8_t* const end = pixel + picture.PixelBytes();
    for (; pixel < end; pixel += bytesPerPixel) {
        const bool visible = bytesPerPixel == 3 || pixel[bytesPerPixel - 1] != 0;
        *indices++ = visible ? static_cast<std::uint8_t>(
                                   few.index.EntryOf(PackColor({0, pixel[0], pixel[1], pixel[2]})))
                             : hidden;
        if (opacities) *opacities++ = visible ? 255 : 0;
    }
}

std::uint8_t* MutableOpacityOf(Picture& picture) {
    return const_cast<std::uint8_t*>(OpacityOf(picture));
}

/// Calls `apply` with a reference to each opacity; the rest of the picture is left alone.
template <typename Apply> void ForEachOpacity(Picture& picture, Apply apply) {
    const bool indexed = picture.kind == Picture::Kind::indexed;
    if (picture.kind == Picture::Kind::rgb) return;
    std::uint8_t* opacity = indexed ? MutableOpacityOf(picture) : picture.pixels.get() + 3;
    if (!opacity) return;
    const std::ptrdiff_t step = indexed ? 1 : 4;
    std::size_t left = picture.PixelBytes() / static_cast<std::size_t>(picture.BytesPerPixel());
    for (; left > 0; --left, opacity += step) apply(*opacity);
}

void ApplyThreshold(Picture& picture, int threshold) {
    ForEachOpacity(picture,
                   [threshold](std::uint8_t& opacity) { opacity = opacity < threshold ? 0 : 255; });
    DropOpaqueAlpha(picture);
}

// Opacities of a table's pixels may give more colours than the table has.
void LayOver(Picture& picture, RGBtuple below) {
    if (OpacityOf(picture)) ExpandToRGB(picture);
    FlattenAlpha(picture, below);
}

} // namespace

int UsedEntries(const Picture& picture) {
    std::bitset<256> used;
    const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    for (const std::uint8_t* index = picture.pixels.get(); index < end; ++index) used.set(*index);
    return static_cast<int>(used.count());
}

bool ShapingLoses(const Picture& picture, const Shaping& how) {
    const bool hasOpacity = picture.kind == Picture::Kind::rgbAlpha || OpacityOf(picture);
    return hasOpacity && (how.alphaThreshold > 0 || how.opaque);
}

void Shape(Picture& picture, const Shaping& how) {
    if (how.alphaThreshold > 0) ApplyThreshold(picture, how.alphaThreshold);
    if (how.opaque) LayOver(picture, how.matte);
    if (how.way == Way::rgb) return ExpandToRGB(picture);
    if (picture.kind != Picture::Kind::indexed && !MakeIndexed(picture)) {
        if (how.way == Way::indexed)
            throw Problem("has too many colours for a colour table, which holds 256 (255 beside "
                          "transparency), or opacities between all and none",
                          kUsage);
        return;
    }
    if (how.way == Way::natural && how.colors < kMostColors && UsedEntries(picture) > how.colors)
        ExpandToRGB(picture);
}

bool FitsTable(const Picture& picture) {
    return picture.kind == Picture::Kind::indexed || FindFewColors(picture);
}

bool MakeIndexed(Picture& picture) {
    if (picture.kind == Picture::Kind::indexed) return true;
    const bool alpha = picture.kind == Picture::Kind::rgbAlpha;
    auto few = FindFewColors(picture);
    if (!few) return false;

    Picture made = MakePicture(Picture::Kind::indexed, picture.rows, picture.columns);
    made.colors = few->index.Count() + (few->transparent ? 1 : 0);
    for (int entry = 0; entry < few->index.Count(); ++entry)
        SetTableEntry(made.table, entry, UnpackColor(few->index.Color(entry)));
    std::uint8_t* opacities = nullptr;
    if (few->transparent) {
        made.channels.push_back(
            {kTransparencyChannel,
             std::make_unique_for_overwrite<std::uint8_t[]>(made.PixelBytes())});
        opacities = made.channels[0].bytes.get();
    }
    if (alpha)
        FillIndices<4>(picture, *few, made.pixels.get(), opacities);
    else
        FillIndices<3>(picture, *few, made.pixels.get(), opacities);
    made.comment = std::move(picture.comment);
    made.notes = std::move(picture.notes);
    made.notes.madeIndexed = true;
    picture = std::move(made);
    return true;
}

} // namespace gif89
