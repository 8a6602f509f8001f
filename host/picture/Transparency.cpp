#include "Transparency.h"

#include <algorithm>
#include <bitset>

namespace gif89 {
namespace {

/// Calls `apply` with a reference to each opacity; the rest of the picture is left alone.
template <typename Apply> void ForEachOpacity(const Picture& picture, Apply apply) {
    if (picture.kind == Picture::Kind::rgb) return;
    const bool indexed = picture.kind == Picture::Kind::indexed;
    std::uint8_t* opacity =
        indexed ? const_cast<std::uint8_t*>(OpacityOf(picture)) : picture.pixels.get() + 3;
    if (!opacity) return;
    const std::ptrdiff_t step = indexed ? 1 : 4;
    for (std::size_t left = picture.PixelCount(); left > 0; --left, opacity += step)
        apply(*opacity);
}

// The colour is rounded to the nearest level, the opacity left alone.
void BlendPixel(std::uint8_t* pixel, RGBtuple below) {
    const int opacity = pixel[3];
    const auto blend = [opacity](std::uint8_t& level, int under) {
        level = static_cast<std::uint8_t>((level * opacity + under * (255 - opacity) + 127) / 255);
    };
    blend(pixel[0], below.red);
    blend(pixel[1], below.green);
    blend(pixel[2], below.blue);
}

} // namespace

int OwnTransparency(const Picture& picture) {
    const auto hides = [pixels = picture.PixelCount()](const Channel& channel) {
        return channel.name == kTransparencyChannel &&
               std::any_of(channel.bytes.get(), channel.bytes.get() + pixels,
                           [](std::uint8_t opacity) { return opacity < kVisibleFrom; });
    };
    const auto found = std::find_if(picture.channels.begin(), picture.channels.end(), hides);
    if (found == picture.channels.end()) return 0;
    return static_cast<int>(found - picture.channels.begin()) + 1;
}

bool HasTransparent(const Picture& picture) {
    bool found = false;
    ForEachOpacity(picture, [&found](std::uint8_t opacity) { found |= opacity == 0; });
    return found;
}

bool HasPartlyOpaque(const Picture& picture) {
    bool found = false;
    ForEachOpacity(picture,
                   [&found](std::uint8_t opacity) { found |= opacity != 0 && opacity != 255; });
    return found;
}

void CutOpacity(Picture& picture, int threshold) {
    if (!HasOpacity(picture)) return;
    ForEachOpacity(picture,
                   [threshold](std::uint8_t& opacity) { opacity = opacity < threshold ? 0 : 255; });
    picture.visibleColors.reset();
    DropOpaqueAlpha(picture);
}

void BlendOver(Picture& picture, RGBtuple below, int threshold) {
    if (OpacityOf(picture) && HasPartlyOpaque(picture)) ExpandToRGB(picture);
    if (picture.kind == Picture::Kind::rgbAlpha) {
        const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
        for (std::uint8_t* pixel = picture.pixels.get(); pixel < end; pixel += 4)
            if (pixel[3] >= threshold) BlendPixel(pixel, below);
    }
    CutOpacity(picture, threshold);
}

// Opacities of a table's pixels may give more colours than the table has.
void LayOver(Picture& picture, RGBtuple below) {
    if (OpacityOf(picture)) ExpandToRGB(picture);
    FlattenAlpha(picture, below);
}

void HideEntries(Picture& picture, const std::vector<int>& entries, int channel) {
    std::bitset<256> hidden;
    for (const int entry : entries) hidden.set(static_cast<std::size_t>(entry));
    std::uint8_t* const opacity =
        picture.channels[static_cast<std::size_t>(channel) - 1].bytes.get();
    for (std::size_t n = 0; n < picture.PixelBytes(); ++n)
        if (hidden[picture.pixels[n]]) opacity[n] = 0;
    picture.visibleColors.reset();
}

} // namespace gif89
