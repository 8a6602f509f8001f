// A picture in memory, in the two shapes that the module exports.
#pragma once

#include "Color.h"
#include "ColorTable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace gif89 {

/// The largest side a picture may have; the module counts rows and columns in 16 bits.
constexpr int kLargestSide = 32767;

/// What the pixels of a picture may take. An export counts its memory in 31 bits, and needs more.
constexpr std::size_t kMostPixelBytes = 0x7FFFFFFF;

/// A further plane of an indexed picture: rows x columns bytes, no padding.
struct Channel {
    std::string name;
    std::unique_ptr<std::uint8_t[]> bytes;
};

/// What a reader met in the file, and what it and the steps after it did to reach our form.
struct InputNotes {
    std::string format;     ///< "PNG", "JPEG", ...
    int bits = 8;           ///< of a sample in the file, 1..64
    bool rounded = false;   ///< some sample had more than 8 bits and was no exact level of 255
    bool inks = false;      ///< stored as cyan, magenta, yellow and black
    int pictures = 1;       ///< in the file; only the first is read
    int droppedSamples = 0; ///< of a pixel in the file, that the picture has no place for
    std::vector<std::uint8_t> profile; ///< embedded ICC profile, until it is applied
    enum class ProfileUse : std::uint8_t {
        none,      ///< no profile in the file
        same,      ///< its colours are those of sRGB; the samples were left as they are
        converted, ///< the samples were converted to sRGB
        unusable,  ///< damaged or not for this kind of picture; the samples were left as they are
    };
    ProfileUse profileUse = ProfileUse::none;
    std::string profileName;  ///< its description, UTF-8; empty when it has none
    int orientation = 1;      ///< as the file states it, 1..8 (EXIF); 1 is upright
    bool oriented = false;    ///< the picture was turned upright accordingly
    bool madeIndexed = false; ///< its table was made for a picture without one
    bool reduced = false;     ///< that table does not have all of its colours
    /// Sentences about damage behind the pixels of the first picture, see NoteDamage.
    std::vector<std::string> warnings;
};

/// Either RGB (3 bytes a pixel: red, green, blue), RGB with opacity (4 bytes; 0 transparent, 255
/// opaque, colours not multiplied by it) or indexed (1 byte: an entry of `table`).
struct Picture {
    enum class Kind : std::uint8_t { rgb, rgbAlpha, indexed };

    Kind kind = Kind::rgb;
    int rows = 0;                           ///< 1..kLargestSide
    int columns = 0;                        ///< 1..kLargestSide
    std::unique_ptr<std::uint8_t[]> pixels; ///< rows x columns pixels, no padding
    RGBLookUpTable table = {};              ///< indexed only; black from `colors` up
    int colors = 0;                         ///< indexed only: entries in use, 1..256
    std::vector<Channel> channels;          ///< indexed only
    std::string comment;                    ///< the picture's own comment, empty for none
    InputNotes notes;
    std::optional<std::int64_t> visibleColors; ///< what CountColors finds, once it is known

    int BytesPerPixel() const { return kind == Kind::indexed ? 1 : kind == Kind::rgb ? 3 : 4; }
    std::size_t RowBytes() const {
        return static_cast<std::size_t>(columns) * static_cast<std::size_t>(BytesPerPixel());
    }
    std::size_t PixelBytes() const { return RowBytes() * static_cast<std::size_t>(rows); }
    std::size_t PixelCount() const {
        return static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
    }
};

/// Name of the channel that carries the opacity of an indexed picture: 0 transparent, 255 opaque.
constexpr char kTransparencyChannel[] = "Transparency";

/// An empty picture of that shape, pixels undefined. Throws Problem when a side is not
/// 1..kLargestSide or the pixels would take more than kMostPixelBytes, before any memory is asked
/// for, and when there is not enough memory. The pixels are not touched: until a reader stores them
/// they cost addresses only, so a header that promises more than its file holds is cheap.
Picture MakePicture(Picture::Kind kind, long long rows, long long columns);

/// Notes damage that lies behind the pixels of the first picture, all of which were read.
///
/// @param what the end of a sentence
void NoteDamage(InputNotes& notes, const std::string& what);

/// The picture with pixels and channels of its own. Throws Problem without memory.
Picture CopyPicture(const Picture& picture);

/// The opacity of an indexed picture: the bytes of channel "Transparency", null without one.
const std::uint8_t* OpacityOf(const Picture& picture);
/// True for pictures that say of each pixel how opaque it is.
bool HasOpacity(const Picture& picture);

/// Gives an indexed picture a further channel, bytes undefined, and returns them; the picture owns
/// them. Throws Problem when there is not enough memory.
std::uint8_t* AddChannel(Picture& picture, std::string name);

/// Gives an indexed picture a table of `colors` greys, 2..256, evenly from black to white.
void SetGreyRamp(Picture& picture, int colors);

/// The entries in use of an indexed picture's table.
Palette TableOf(const Picture& picture);

/// Turns an rgbAlpha picture whose every pixel is opaque into an rgb one, in place, and drops the
/// opacity of an indexed one likewise; leaves any other picture alone.
void DropOpaqueAlpha(Picture& picture);

/// Takes the transparency out of a picture: lays an rgbAlpha picture over a colour and makes it an
/// rgb one, in place. Leaves any other picture alone.
void FlattenAlpha(Picture& picture, RGBtuple below);

/// The levels of a grey picture, indexed or with equal channels: rows x columns bytes. Throws
/// Problem when it has a pixel that is not grey.
std::unique_ptr<std::uint8_t[]> TakeGreyLevels(const Picture& picture);

/// Turns an indexed picture into an RGB one through its table; channel "Transparency", if there,
/// becomes its opacity and the other channels are dropped. Leaves RGB pictures alone.
void ExpandToRGB(Picture& picture);

} // namespace gif89
