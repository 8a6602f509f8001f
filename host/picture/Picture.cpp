#include "Picture.h"

#include "Problem.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace gif89 {

namespace {

std::string SidesText(long long rows, long long columns) {
    return std::to_string(columns) + " x " + std::to_string(rows) + " pixels";
}

bool AreOpaque(const std::uint8_t* opacity, std::size_t pixels, int step) {
    for (; pixels > 0; --pixels, opacity += step)
        if (*opacity != 255) return false;
    return true;
}

void DropOpaqueChannel(Picture& picture) {
    const std::uint8_t* const opacity = OpacityOf(picture);
    if (opacity && AreOpaque(opacity, picture.PixelBytes(), 1))
        std::erase_if(picture.channels,
                      [opacity](const Channel& channel) { return channel.bytes.get() == opacity; });
}

} // namespace

Picture MakePicture(Picture::Kind kind, long long rows, long long columns) {
    if (rows < 1 || columns < 1)
        throw Problem("is " + SidesText(rows, columns) + "; at least one pixel is needed");
    if (rows > kLargestSide || columns > kLargestSide)
        throw Problem("is " + SidesText(rows, columns) + "; sides above " +
                      std::to_string(kLargestSide) + " cannot be stored");
    Picture picture;
    picture.kind = kind;
    picture.rows = static_cast<int>(rows);
    picture.columns = static_cast<int>(columns);
    if (picture.PixelBytes() > kMostPixelBytes)
        throw Problem("is " + SidesText(rows, columns) + " of " +
                      std::to_string(picture.BytesPerPixel()) +
                      " bytes, more than the 2 GiB that one export may use");
    try {
        picture.pixels = std::make_unique_for_overwrite<std::uint8_t[]>(picture.PixelBytes());
    } catch (const std::bad_alloc&) {
        throw Problem("is " + SidesText(rows, columns) + "; there is not enough memory for its " +
                      std::to_string(picture.PixelBytes() >> 20) + " megabytes");
    }
    return picture;
}

void NoteDamage(InputNotes& notes, const std::string& what) {
    notes.warnings.push_back("all pixels were read, but behind them the file is damaged: " + what);
}

Picture CopyPicture(const Picture& picture) {
    Picture copy = MakePicture(picture.kind, picture.rows, picture.columns);
    std::copy_n(picture.pixels.get(), picture.PixelBytes(), copy.pixels.get());
    copy.table = picture.table;
    copy.colors = picture.colors;
    for (const Channel& channel : picture.channels) {
        auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(picture.PixelBytes());
        std::copy_n(channel.bytes.get(), picture.PixelBytes(), bytes.get());
        copy.channels.push_back({channel.name, std::move(bytes)});
    }
    copy.comment = picture.comment;
    copy.notes = picture.notes;
    copy.visibleColors = picture.visibleColors;
    return copy;
}

const std::uint8_t* OpacityOf(const Picture& picture) {
    for (const Channel& channel : picture.channels)
        if (channel.name == kTransparencyChannel) return channel.bytes.get();
    return nullptr;
}

bool HasOpacity(const Picture& picture) {
    return picture.kind == Picture::Kind::rgbAlpha ||
           (picture.kind == Picture::Kind::indexed && OpacityOf(picture));
}

std::uint8_t* AddChannel(Picture& picture, std::string name) {
    try {
        picture.channels.push_back({std::move(name), std::make_unique_for_overwrite<std::uint8_t[]>(
                                                         picture.PixelBytes())});
    } catch (const std::bad_alloc&) {
        throw Problem("is " + SidesText(picture.rows, picture.columns) +
                      "; there is not enough memory for its channels");
    }
    return picture.channels.back().bytes.get();
}

void SetGreyRamp(Picture& picture, int colors) {
    const int brightest = colors - 1;
    picture.table = {};
    picture.colors = colors;
    for (int index = 0; index < colors; ++index) {
        const auto level = static_cast<std::uint8_t>((index * 255 + brightest / 2) / brightest);
        SetTableEntry(picture.table, index, {0, level, level, level});
    }
}

Palette TableOf(const Picture& picture) {
    Palette palette;
    for (int i = 0; i < picture.colors; ++i) {
        const RGBtuple color = TableEntry(picture.table, i);
        palette.push_back({color.red, color.green, color.blue});
    }
    return palette;
}

void DropOpaqueAlpha(Picture& picture) {
    DropOpaqueChannel(picture);
    if (picture.kind != Picture::Kind::rgbAlpha) return;
    const std::size_t pixels = picture.PixelBytes() / 4;
    if (!AreOpaque(picture.pixels.get() + 3, pixels, 4)) return;
    // The block keeps its size: a smaller one would need both at once.
    std::uint8_t* to = picture.pixels.get();
    const std::uint8_t* from = to;
    for (std::size_t n = 0; n < pixels; ++n, from += 4) {
        *to++ = from[0];
        *to++ = from[1];
        *to++ = from[2];
    }
    picture.kind = Picture::Kind::rgb;
}

void FlattenAlpha(Picture& picture, RGBtuple below) {
    if (picture.kind != Picture::Kind::rgbAlpha) return;
    const int background[] = {below.red, below.green, below.blue};
    const std::size_t pixels = picture.PixelBytes() / 4;
    std::uint8_t* to = picture.pixels.get();
    const std::uint8_t* from = to;
    for (std::size_t n = 0; n < pixels; ++n, from += 4) {
        const int opacity = from[3];
        for (int c = 0; c < 3; ++c)
            *to++ = static_cast<std::uint8_t>(
                (from[c] * opacity + background[c] * (255 - opacity) + 127) / 255);
    }
    picture.kind = Picture::Kind::rgb;
    picture.visibleColors.reset();
}

std::unique_ptr<std::uint8_t[]> TakeGreyLevels(const Picture& picture) {
    const std::size_t pixels = picture.PixelCount();
    auto levels = std::make_unique_for_overwrite<std::uint8_t[]>(pixels);
    const int step = picture.BytesPerPixel();
    const std::uint8_t* pixel = picture.pixels.get();
    for (std::size_t n = 0; n < pixels; ++n, pixel += step) {
        const RGBtuple color = step == 1 ? TableEntry(picture.table, *pixel)
                                         : RGBtuple{0, pixel[0], pixel[1], pixel[2]};
        if (color.red != color.green || color.red != color.blue)
            throw Problem("is no grey picture; one is expected for a channel");
        levels[n] = color.red;
    }
    return levels;
}

void ExpandToRGB(Picture& picture) {
    if (picture.kind != Picture::Kind::indexed) return;
    const std::uint8_t* const opacity = OpacityOf(picture);

    Picture expanded = MakePicture(opacity ? Picture::Kind::rgbAlpha : Picture::Kind::rgb,
                                   picture.rows, picture.columns);
    std::uint8_t* to = expanded.pixels.get();
    const std::size_t pixels = picture.PixelBytes();
    for (std::size_t n = 0; n < pixels; ++n) {
        const RGBtuple color = TableEntry(picture.table, picture.pixels[n]);
        *to++ = color.red;
        *to++ = color.green;
        *to++ = color.blue;
        if (opacity) *to++ = opacity[n];
    }
    expanded.comment = std::move(picture.comment);
    expanded.notes = std::move(picture.notes);
    expanded.visibleColors = picture.visibleColors;
    picture = std::move(expanded);
}

} // namespace gif89
