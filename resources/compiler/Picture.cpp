#include "Picture.h"

#include <algorithm>
#include <map>

#include <png.h>

namespace gif89 {

namespace {

struct Artwork {
    int columns = 0;
    int rows = 0;
    Bytes rgba;
};

/// One byte a pixel, and the colours that the bytes stand for.
struct IndexedArtwork {
    int columns = 0;
    int rows = 0;
    int rowBytes = 0; ///< even, and at least 8: shorter rows would have to lie unpacked
    Bytes indices;
    std::vector<std::uint32_t> colors; ///< red x 65536 + green x 256 + blue
};

Artwork ReadPNG(const std::string& path, const Place& place) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    png_image_begin_read_from_file(&image, path.c_str());
    const bool isDeep = (image.format & PNG_FORMAT_FLAG_LINEAR) != 0;
    image.format = PNG_FORMAT_RGBA;
    Artwork artwork = {static_cast<int>(image.width), static_cast<int>(image.height), {}};
    if (image.warning_or_error == 0 && !isDeep && image.width <= 4096 && image.height <= 4096) {
        artwork.rgba.resize(PNG_IMAGE_SIZE(image));
        png_image_finish_read(&image, nullptr, artwork.rgba.data(), 0, nullptr);
    }
    const std::string problem = image.message;
    png_image_free(&image);
    if (artwork.rgba.empty() || PNG_IMAGE_FAILED(image))
        throw SourceError(place,
                          path + " cannot be read (" +
                              (problem.empty() ? "16 bits a channel, or too large" : problem) +
                              "), expected a PNG of 8 bits a channel");
    return artwork;
}

IndexedArtwork CountColors(const Artwork& artwork, const std::string& path, const Place& place) {
    IndexedArtwork indexed = {
        artwork.columns, artwork.rows, std::max(8, (artwork.columns + 1) & ~1), {}, {}};
    std::map<std::uint32_t, std::size_t> found;
    for (std::size_t pixel = 0; pixel < artwork.rgba.size() / 4; ++pixel) {
        const auto rgba = GetBE<std::uint32_t>(&artwork.rgba[pixel * 4]);
        if ((rgba & 0xFF) != 0xFF)
            throw SourceError(place, path + " has see-through pixels, expected opaque ones");
        const auto [color, isNew] = found.try_emplace(rgba >> 8, found.size());
        if (isNew) indexed.colors.push_back(rgba >> 8);
        if (found.size() > 256)
            throw SourceError(place, path + " has more than 256 colours, expected at most 256");
        PutByte(indexed.indices, static_cast<int>(color->second));
    }
    return indexed;
}

/// Pixels a point, the same both ways.
int FindScale(const IndexedArtwork& artwork, const Rect& frame, const std::string& path,
              const Place& place) {
    const int width = frame.right - frame.left, height = frame.bottom - frame.top;
    const int scale = artwork.columns / width;
    if (scale < 1 || scale > 8 || artwork.columns != scale * width ||
        artwork.rows != scale * height)
        throw SourceError(place, path + " has " + std::to_string(artwork.columns) + " x " +
                                     std::to_string(artwork.rows) + " pixels, expected " +
                                     std::to_string(width) + " x " + std::to_string(height) +
                                     " or 2 to 8 times that");
    return scale;
}

void PutHeader(Bytes& picture, const Rect& frame, const Rect& pixels, std::uint32_t resolution) {
    PutWord(picture, 0); // low word of the size, of no use in version 2
    PutRect(picture, frame);
    PutWord(picture, 0x0011); // version operation
    PutWord(picture, 0x02FF); // version 2
    PutWord(picture, 0x0C00); // header operation
    PutWord(picture, -2);     // extended header: the drawing is in pixels of the resolution
    PutWord(picture, 0);
    PutLong(picture, resolution); // horizontal, 16.16
    PutLong(picture, resolution); // vertical
    PutRect(picture, pixels);     // the drawing's own frame
    PutLong(picture, 0);
    PutWord(picture, 0x0001); // clip operation
    PutWord(picture, 10);     // a region that is a rectangle
    PutRect(picture, pixels);
}

void PutPixelMap(Bytes& picture, const IndexedArtwork& artwork, const Rect& pixels,
                 std::uint32_t resolution) {
    PutWord(picture, artwork.rowBytes | 0x8000); // the top bit tells it from a bit map
    PutRect(picture, pixels);                    // bounds
    PutWord(picture, 0);                         // version
    PutWord(picture, 0);                         // packed in the way usual for its depth
    PutLong(picture, 0);                         // packed size, unknown
    PutLong(picture, resolution);                // horizontal, 16.16
    PutLong(picture, resolution);                // vertical
    PutWord(picture, 0);                         // pixels are indices
    PutWord(picture, 8);                         // bits a pixel
    PutWord(picture, 1);                         // components a pixel
    PutWord(picture, 8);                         // bits a component
    PutLong(picture, 0);                         // plane bytes
    PutLong(picture, 0);                         // colour table, when in memory
    PutLong(picture, 0);
}

void PutColorTable(Bytes& picture, const std::vector<std::uint32_t>& colors) {
    PutLong(picture, 0); // seed
    PutWord(picture, 0); // flags
    PutWord(picture, static_cast<int>(colors.size()) - 1);
    for (std::size_t i = 0; i < colors.size(); ++i) {
        PutWord(picture, static_cast<int>(i));
        for (const int shift : {16, 8, 0})
            PutWord(picture, static_cast<int>(colors[i] >> shift & 0xFF) * 0x101);
    }
}

/// Appends a run of equal bytes or a stretch of different ones, and returns its length.
std::size_t PackStretch(const std::uint8_t* bytes, std::size_t count, Bytes& packed) {
    count = std::min<std::size_t>(count, 128);
    const auto runAt = [&](std::size_t start) {
        std::size_t end = start;
        while (end < count && bytes[end] == bytes[start]) ++end;
        return end - start;
    };
    const std::size_t run = runAt(0);
    if (run > 1) {
        PutByte(packed, 1 - static_cast<int>(run));
        PutByte(packed, bytes[0]);
        return run;
    }
    std::size_t length = 1;
    while (length < count && runAt(length) < 3) ++length;
    PutByte(packed, static_cast<int>(length) - 1);
    packed.insert(packed.end(), bytes, bytes + length);
    return length;
}

void PutPackedRows(Bytes& picture, const IndexedArtwork& artwork) {
    const auto columns = static_cast<std::size_t>(artwork.columns);
    const auto rowBytes = static_cast<std::size_t>(artwork.rowBytes);
    for (std::size_t row = 0; row < static_cast<std::size_t>(artwork.rows); ++row) {
        Bytes pixels(rowBytes), packed;
        std::copy_n(&artwork.indices[row * columns], columns, pixels.begin());
        for (std::size_t done = 0; done < rowBytes;)
            done += PackStretch(&pixels[done], rowBytes - done, packed);
        const auto length = static_cast<int>(packed.size());
        if (rowBytes > 250)
            PutWord(picture, length);
        else
            PutByte(picture, length);
        PutBytes(picture, packed);
    }
}

} // namespace

Bytes ConvertPicture(const std::string& path, const Rect& frame, const Place& place) {
    const IndexedArtwork artwork = CountColors(ReadPNG(path, place), path, place);
    const int scale = FindScale(artwork, frame, path, place);
    const auto resolution = static_cast<std::uint32_t>(72 * scale) << 16;
    const Rect pixels = {0, 0, static_cast<std::int16_t>(artwork.rows),
                         static_cast<std::int16_t>(artwork.columns)};
    Bytes picture;
    PutHeader(picture, frame, pixels, resolution);
    PutWord(picture, 0x0098); // packed bits operation
    PutPixelMap(picture, artwork, pixels, resolution);
    PutColorTable(picture, artwork.colors);
    PutRect(picture, pixels); // from
    PutRect(picture, pixels); // to
    PutWord(picture, 0);      // mode: copy
    PutPackedRows(picture, artwork);
    PadToEven(picture);
    PutWord(picture, 0x00FF); // end operation
    return picture;
}

} // namespace gif89
