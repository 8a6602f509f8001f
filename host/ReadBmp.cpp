#include "ReadBmp.h"

#include "BmpDecoder.h"
#include "ExportModule.h"
#include "Problem.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <span>
#include <utility>

namespace gif89 {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kInfo = 14;              // where the second header starts, behind the file's
constexpr std::uint32_t kOldestInfoBytes = 12; // the only version with words for sides
constexpr std::uint32_t kAlphaInfoBytes = 56;  // from here on with a mask for alpha
constexpr std::uint32_t kVersion5InfoBytes = 124;
constexpr std::uint32_t kBitFields = 3, kAlphaBitFields = 6; // compressions that are none
constexpr std::uint32_t kEmbeddedProfile = 0x4D424544;       // 'MBED'

struct Header {
    std::uint32_t pixelsOffset = 0;
    std::uint32_t infoBytes = 0;
    long long columns = 0, rows = 0;
    bool topDown = false;
    int bits = 0; // of a pixel
    std::uint32_t compression = 0;
};

/// The bits of a pixel's word that make one sample.
struct Mask {
    std::uint32_t bits = 0;
    int Shift() const { return std::countr_zero(bits); }
    std::uint64_t Maximum() const { return bits >> Shift(); }
};
using Masks = std::array<Mask, 4>; // red, green, blue, alpha; no bits for none

Problem DamageProblem(const std::string& what) {
    return Problem("is a damaged BMP picture: " + what);
}

std::uint32_t ReadLE(const Bytes& file, std::size_t offset, int bytes) {
    if (offset + static_cast<std::size_t>(bytes) > file.size())
        throw DamageProblem("the file ends inside its headers");
    std::uint32_t value = 0;
    for (int n = bytes - 1; n >= 0; --n)
        value = value << 8 | file[offset + static_cast<std::size_t>(n)];
    return value;
}

Header ReadHeader(const Bytes& file) {
    Header header;
    header.pixelsOffset = ReadLE(file, 10, 4); // bfOffBits
    header.infoBytes = ReadLE(file, kInfo, 4); // biSize
    if (header.infoBytes == kOldestInfoBytes) {
        header.columns = ReadLE(file, kInfo + 4, 2);                 // bcWidth
        header.rows = ReadLE(file, kInfo + 6, 2);                    // bcHeight
        header.bits = static_cast<int>(ReadLE(file, kInfo + 10, 2)); // bcBitCount
        return header;
    }
    const auto rows = static_cast<std::int32_t>(ReadLE(file, kInfo + 8, 4)); // biHeight
    header.columns = static_cast<std::int32_t>(ReadLE(file, kInfo + 4, 4));  // biWidth
    header.rows = std::abs(static_cast<long long>(rows));
    header.topDown = rows < 0;
    header.bits = static_cast<int>(ReadLE(file, kInfo + 14, 2)); // biBitCount
    header.compression = ReadLE(file, kInfo + 16, 4);            // biCompression
    return header;
}

std::span<const std::uint8_t> FindProfile(const Bytes& file, const Header& header) {
    if (header.infoBytes != kVersion5InfoBytes) return {};
    if (ReadLE(file, kInfo + 56, 4) != kEmbeddedProfile) return {};  // bV5CSType
    const std::size_t offset = kInfo + ReadLE(file, kInfo + 112, 4); // bV5ProfileData
    const std::size_t size = ReadLE(file, kInfo + 116, 4);           // bV5ProfileSize
    if (offset + size > file.size()) throw DamageProblem("the file ends before its profile does");
    return std::span(file).subspan(offset, size);
}

Masks ReadMasks(const Bytes& file, const Header& header) {
    Masks masks;
    if (header.compression == 0 && header.bits == 16) return {{{0x7C00}, {0x3E0}, {0x1F}, {0}}};
    if (header.compression == 0) return {{{0xFF0000}, {0xFF00}, {0xFF}, {0}}};
    const bool hasAlpha =
        header.infoBytes >= kAlphaInfoBytes || header.compression == kAlphaBitFields;
    for (std::size_t n = 0; n < (hasAlpha ? 4 : 3); ++n)
        masks[n].bits = ReadLE(file, kInfo + 40 + 4 * n, 4); // biRedMask and so on
    for (std::size_t n = 0; n < 3; ++n)
        if (masks[n].bits == 0) throw DamageProblem("a color has no bits");
    return masks;
}

/// Reads the pictures of 16 and 32 bits a pixel, which the library would not scale to full range.
class MaskedReader {
  public:
    MaskedReader(const Bytes& bytes, const Header& fileHeader)
        : file(bytes), header(fileHeader), masks(ReadMasks(file, header)) {}
    Picture Read();

  private:
    void ReadRow(const std::uint8_t* from, std::uint8_t* to);
    std::uint8_t Level(std::uint32_t word, const Mask& mask);

    const Bytes& file;
    const Header& header;
    const Masks masks;
    Picture picture;
};

Picture MaskedReader::Read() {
    const bool hasAlpha = masks[3].bits != 0;
    picture = MakePicture(hasAlpha ? Picture::Kind::rgbAlpha : Picture::Kind::rgb, header.rows,
                          header.columns);
    const auto rows = static_cast<std::size_t>(picture.rows);
    const std::size_t rowBytes =
        (static_cast<std::size_t>(picture.columns) * static_cast<std::size_t>(header.bits) / 8 +
         3) /
        4 * 4;
    const std::size_t first =
        std::max<std::size_t>(header.pixelsOffset, kInfo + std::size_t{header.infoBytes});
    if (file.size() < first + rows * rowBytes)
        throw DamageProblem("the file ends before the picture does");
    for (std::size_t row = 0; row < rows; ++row)
        ReadRow(file.data() + first + (header.topDown ? row : rows - 1 - row) * rowBytes,
                picture.pixels.get() + row * picture.RowBytes());
    picture.notes.bits = 0;
    for (const Mask& mask : masks)
        picture.notes.bits = std::max(picture.notes.bits, std::popcount(mask.bits));
    return std::move(picture);
}

void MaskedReader::ReadRow(const std::uint8_t* from, std::uint8_t* to) {
    const int samples = picture.BytesPerPixel();
    for (int column = 0; column < picture.columns; ++column) {
        std::uint32_t word = 0;
        for (int shift = 0; shift < header.bits; shift += 8)
            word |= static_cast<std::uint32_t>(*from++) << shift;
        for (int n = 0; n < samples; ++n) *to++ = Level(word, masks[static_cast<std::size_t>(n)]);
    }
}

std::uint8_t MaskedReader::Level(std::uint32_t word, const Mask& mask) {
    const std::uint64_t maximum = mask.Maximum();
    const std::uint64_t scaled = std::uint64_t{(word & mask.bits) >> mask.Shift()} * 255;
    if (maximum > 255 && scaled % maximum != 0) picture.notes.rounded = true;
    return static_cast<std::uint8_t>((scaled + maximum / 2) / maximum);
}

DecodeBmpProc* LoadDecoder() {
    const std::filesystem::path module = ExportModule::DefaultPath();
    const std::string path = module.parent_path() / kBmpDecoderLibrary;
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        throw Problem(std::string("cannot be read: the part for BMP pictures does not load: ") +
                      dlerror());
    auto* const decode = reinterpret_cast<DecodeBmpProc*>(dlsym(library, kDecodeBmpSymbol));
    if (!decode) throw Problem("cannot be read: " + path + " is no part for BMP pictures");
    return decode;
}

std::unique_ptr<DecodedBmp> Decode(const Bytes& file) {
    static DecodeBmpProc* const decode = LoadDecoder();
    char reason[200] = "";
    std::unique_ptr<DecodedBmp> decoded(decode(file.data(), file.size(), reason, sizeof reason));
    if (!decoded) throw DamageProblem(reason);
    return decoded;
}

const std::uint8_t* RowOf(const DecodedBmp& decoded, int row) {
    return decoded.pixels + row * decoded.rowBytes;
}

void SetTable(Picture& picture, const DecodedBmp& decoded) {
    picture.colors = std::clamp(decoded.tableColors, 1, 256);
    for (int index = 0; index < decoded.tableColors; ++index)
        SetTableEntry(picture.table, index, UnpackColor(decoded.table[index] & 0xFFFFFF));
}

void CopyIndices(Picture& picture, const DecodedBmp& decoded) {
    std::uint8_t* to = picture.pixels.get();
    for (int row = 0; row < picture.rows; ++row) {
        const std::uint8_t* const from = RowOf(decoded, row);
        for (int column = 0; column < picture.columns; ++column)
            *to++ = decoded.form == DecodedBmp::Form::indices
                        ? from[column]
                        : from[column / 8] >> (7 - column % 8) & 1;
    }
    const int highest = *std::max_element(picture.pixels.get(), to);
    if (highest >= picture.colors)
        throw DamageProblem("a pixel has color " + std::to_string(highest) + " of a table of " +
                            std::to_string(picture.colors));
}

void CopyColors(Picture& picture, const DecodedBmp& decoded) {
    std::uint8_t* to = picture.pixels.get();
    for (int row = 0; row < picture.rows; ++row) {
        const std::uint8_t* from = RowOf(decoded, row);
        for (int column = 0; column < picture.columns; ++column, from += 4) {
            std::uint32_t color = 0;
            std::memcpy(&color, from, 4);
            *to++ = static_cast<std::uint8_t>(color >> 16);
            *to++ = static_cast<std::uint8_t>(color >> 8);
            *to++ = static_cast<std::uint8_t>(color);
        }
    }
}

Picture ReadThroughLibrary(const Bytes& file, const Header& header) {
    // Sees to the sides before the library asks for memory.
    MakePicture(Picture::Kind::rgbAlpha, header.rows, header.columns);
    const std::unique_ptr<DecodedBmp> decoded = Decode(file);
    const bool hasTable = decoded->form != DecodedBmp::Form::colors;
    Picture picture = MakePicture(hasTable ? Picture::Kind::indexed : Picture::Kind::rgb,
                                  decoded->rows, decoded->columns);
    if (hasTable) {
        SetTable(picture, *decoded);
        CopyIndices(picture, *decoded);
    } else {
        CopyColors(picture, *decoded);
    }
    picture.notes.bits = std::min(header.bits, 8);
    return picture;
}

} // namespace

Picture ReadBmp(InputFile& input) {
    const Bytes file = input.ReadRest();
    const Header header = ReadHeader(file);
    const bool masked = (header.bits == 16 || header.bits == 32) &&
                        (header.compression == 0 || header.compression == kBitFields ||
                         header.compression == kAlphaBitFields);
    Picture picture = masked ? MaskedReader(file, header).Read() : ReadThroughLibrary(file, header);
    DropOpaqueAlpha(picture);
    picture.notes.format = "BMP";
    const std::span<const std::uint8_t> profile = FindProfile(file, header);
    picture.notes.profile.assign(profile.begin(), profile.end());
    return picture;
}

} // namespace gif89
