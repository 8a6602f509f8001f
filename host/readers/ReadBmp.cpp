#include "ReadBmp.h"

#include "MetadataAllowance.h"
#include "Problem.h"
#include "ScaleSample.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <utility>

namespace gif89 {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kInfo = 14;              // where the second header starts, behind the file's
constexpr std::uint32_t kOldestInfoBytes = 12; // the only version with words for sides
constexpr std::uint32_t kShortestInfoBytes = 16; // of the later versions; the rest is optional
constexpr std::uint32_t kAlphaInfoBytes = 56;    // headers of this size have a mask for opacity
constexpr std::uint32_t kVersion5InfoBytes = 124;
constexpr std::uint32_t kEmbeddedProfile = 0x4D424544; // 'MBED'
constexpr std::uint32_t kLinkedProfile = 0x4C494E4B;   // 'LINK', in a file of its own

enum Compression : std::uint32_t { // BI_RGB and so on
    kPlain = 0,
    kRuns8 = 1,
    kRuns4 = 2,
    kMasks = 3,
    kMasksWithAlpha = 6
};

struct Header {
    std::size_t firstPixel = 0; // offset in the file
    std::uint32_t infoBytes = 0;
    long long columns = 0, rows = 0;
    bool topDown = false;
    int bits = 0; // of a pixel
    std::uint32_t compression = kPlain;
    std::uint32_t colors = 0; // in the table; 0 means as many as the pixels can refer to

    bool HasTable() const { return bits <= 8; }
    std::size_t RowBytes() const {
        return static_cast<std::size_t>((columns * bits + 31) / 32 * 4);
    }
    std::size_t EntryBytes() const { return infoBytes == kOldestInfoBytes ? 3 : 4; }
};

/// The bits of a pixel's word that make one sample.
struct Mask {
    std::uint32_t bits = 0;
    int Shift() const { return std::countr_zero(bits); }
    std::uint64_t Maximum() const { return bits >> Shift(); }
};
using Masks = std::array<Mask, 4>; // red, green, blue, opacity; 0 bits: the sample is not there

Problem DamageProblem(const std::string& what) {
    return Problem("is a damaged BMP picture: " + what);
}

Problem EndProblem() {
    return DamageProblem("the file ends before the picture does");
}

std::uint32_t ReadLE(const Bytes& file, std::size_t offset, int bytes) {
    if (offset + static_cast<std::size_t>(bytes) > file.size()) throw EndProblem();
    std::uint32_t value = 0;
    for (int n = bytes - 1; n >= 0; --n)
        value = value << 8 | file[offset + static_cast<std::size_t>(n)];
    return value;
}

Header ReadHeader(const Bytes& file) {
    Header header;
    header.infoBytes = ReadLE(file, kInfo, 4);                     // biSize
    header.firstPixel = std::max<std::size_t>(ReadLE(file, 10, 4), // bfOffBits
                                              kInfo + std::size_t{header.infoBytes});
    if (header.infoBytes == kOldestInfoBytes) {
        header.columns = ReadLE(file, kInfo + 4, 2);                 // bcWidth
        header.rows = ReadLE(file, kInfo + 6, 2);                    // bcHeight
        header.bits = static_cast<int>(ReadLE(file, kInfo + 10, 2)); // bcBitCount
        return header;
    }
    if (header.infoBytes < kShortestInfoBytes)
        throw DamageProblem("its header has " + std::to_string(header.infoBytes) + " bytes");
    const auto field = [&](std::size_t offset) {
        return offset + 4 <= header.infoBytes ? ReadLE(file, kInfo + offset, 4) : 0;
    };
    const auto rows = static_cast<std::int32_t>(field(8)); // biHeight
    header.columns = static_cast<std::int32_t>(field(4));  // biWidth
    header.rows = std::abs(static_cast<long long>(rows));
    header.topDown = rows < 0;
    header.bits = static_cast<int>(field(12) >> 16); // biBitCount
    header.compression = field(16);                  // biCompression
    header.colors = field(32);                       // biClrUsed
    return header;
}

void CheckForm(const Header& header) {
    constexpr std::pair<std::uint32_t, int> kForms[] = {
        {kPlain, 1},  {kPlain, 2},           {kPlain, 4},          {kPlain, 8}, {kPlain, 16},
        {kPlain, 24}, {kPlain, 32},          {kRuns8, 8},          {kRuns4, 4}, {kMasks, 16},
        {kMasks, 32}, {kMasksWithAlpha, 16}, {kMasksWithAlpha, 32}};
    if (std::find(std::begin(kForms), std::end(kForms),
                  std::pair(header.compression, header.bits)) == std::end(kForms))
        throw Problem("is a BMP picture of " + std::to_string(header.bits) +
                      " bits a pixel with compression number " +
                      std::to_string(header.compression) + ", which is not known");
}

void TakeProfile(const Bytes& file, const Header& header, InputNotes& notes) {
    if (header.infoBytes != kVersion5InfoBytes) return;
    const std::uint32_t colorSpace = ReadLE(file, kInfo + 56, 4); // bV5CSType
    if (colorSpace == kLinkedProfile) notes.profileUse = InputNotes::ProfileUse::unusable;
    if (colorSpace != kEmbeddedProfile) return;
    const std::size_t offset = kInfo + ReadLE(file, kInfo + 112, 4); // bV5ProfileData
    const std::size_t size = ReadLE(file, kInfo + 116, 4);           // bV5ProfileSize
    if (offset + size > file.size()) throw EndProblem();
    MetadataAllowance().Take(size);
    const auto first = file.begin() + static_cast<std::ptrdiff_t>(offset);
    notes.profile.assign(first, first + static_cast<std::ptrdiff_t>(size));
}

Masks ReadMasks(const Bytes& file, const Header& header) {
    if (header.compression == kPlain && header.bits == 16)
        return {{{0x7C00}, {0x3E0}, {0x1F}, {0}}};
    if (header.compression == kPlain) return {{{0xFF0000}, {0xFF00}, {0xFF}, {0}}};
    Masks masks;
    const bool hasAlpha =
        header.infoBytes >= kAlphaInfoBytes || header.compression == kMasksWithAlpha;
    for (std::size_t n = 0; n < (hasAlpha ? 4 : 3); ++n)
        masks[n].bits = ReadLE(file, kInfo + 40 + 4 * n, 4); // bV4RedMask and so on
    if (masks[0].bits == 0 || masks[1].bits == 0 || masks[2].bits == 0)
        throw DamageProblem("a colour has no bits");
    return masks;
}

/// The bytes of a row of the picture. Files store the rows from the bottom up or from the top down.
const std::uint8_t* StoredRow(const Bytes& file, const Header& header, int row) {
    const auto place = static_cast<std::size_t>(header.topDown ? row : header.rows - 1 - row);
    return file.data() + header.firstPixel + place * header.RowBytes();
}

void CheckRows(const Bytes& file, const Header& header) {
    const std::size_t wanted = static_cast<std::size_t>(header.rows) * header.RowBytes();
    if (file.size() < header.firstPixel || file.size() - header.firstPixel < wanted)
        throw EndProblem();
}

/// Reads pictures of 16, 24 and 32 bits a pixel.
class ColorReader {
  public:
    ColorReader(const Bytes& bytes, const Header& fileHeader)
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

Picture ColorReader::Read() {
    const bool hasAlpha = masks[3].bits != 0;
    picture = MakePicture(hasAlpha ? Picture::Kind::rgbAlpha : Picture::Kind::rgb, header.rows,
                          header.columns);
    CheckRows(file, header);
    for (int row = 0; row < picture.rows; ++row)
        ReadRow(StoredRow(file, header, row),
                picture.pixels.get() + static_cast<std::size_t>(row) * picture.RowBytes());
    picture.notes.bits = 0;
    for (const Mask& mask : masks)
        picture.notes.bits = std::max(picture.notes.bits, std::popcount(mask.bits));
    return std::move(picture);
}

void ColorReader::ReadRow(const std::uint8_t* from, std::uint8_t* to) {
    const int samples = picture.BytesPerPixel();
    for (int column = 0; column < picture.columns; ++column) {
        std::uint32_t word = 0;
        for (int shift = 0; shift < header.bits; shift += 8)
            word |= static_cast<std::uint32_t>(*from++) << shift;
        for (int n = 0; n < samples; ++n) *to++ = Level(word, masks[static_cast<std::size_t>(n)]);
    }
}

std::uint8_t ColorReader::Level(std::uint32_t word, const Mask& mask) {
    const std::uint64_t maximum = mask.Maximum();
    const std::uint64_t sample = (word & mask.bits) >> mask.Shift();
    if (maximum > 255 && sample * 255 % maximum != 0) picture.notes.rounded = true;
    return ScaleSample(sample, maximum);
}

/// Unpacks runs into a picture's indices.
class RunReader {
  public:
    RunReader(const Bytes& bytes, const Header& fileHeader, Picture& target)
        : file(bytes), header(fileHeader), picture(target), next(header.firstPixel) {}

    void Read() {
        while (ReadRun()) {
        }
        SkipTo(picture.rows, 0); // after the runs, so that a small damaged file costs no memory
    }

  private:
    bool ReadRun();
    bool ReadEscape(int code);
    void ReadPixels(int count);
    std::uint8_t* Place() const;
    void Put(int index);
    void SkipTo(int toRow, int toColumn);
    int Byte() {
        if (next >= file.size()) throw EndProblem();
        return file[next++];
    }
    // An index from a byte that holds one pixel or, high bits first, two.
    int IndexOf(int byte, int n) const {
        if (header.compression == kRuns8) return byte;
        return n % 2 == 0 ? byte >> 4 : byte & 15;
    }

    const Bytes& file;
    const Header& header;
    Picture& picture;
    std::size_t next;        // offset of the next byte in the file
    int row = 0, column = 0; // place of the next pixel, rows in the order of the file
};

// Reads one run: a count and the byte to repeat, or 0 and a code. Returns false at the end of the
// picture.
bool RunReader::ReadRun() {
    const bool isWhole =
        row >= picture.rows || (row == picture.rows - 1 && column == picture.columns);
    if (isWhole && next == file.size()) {
        NoteDamage(picture.notes, "its end is missing");
        return false;
    }
    const int count = Byte();
    const int value = Byte();
    if (count == 0) return ReadEscape(value);
    for (int n = 0; n < count; ++n) Put(IndexOf(value, n));
    return true;
}

bool RunReader::ReadEscape(int code) {
    constexpr int kEndOfRow = 0, kEndOfPicture = 1, kStep = 2;
    switch (code) {
    case kEndOfRow:
        SkipTo(row + 1, 0);
        return true;
    case kEndOfPicture:
        return false;
    case kStep: {
        const int right = Byte();
        const int down = Byte();
        SkipTo(row + down, column + right);
        return true;
    }
    default:
        ReadPixels(code);
        return true;
    }
}

// Reads pixels that are stored without repetition and padded to a whole word.
void RunReader::ReadPixels(int count) {
    const std::size_t first = next;
    const int perByte = header.compression == kRuns8 ? 1 : 2;
    for (int n = 0, byte = 0; n < count; ++n) {
        if (n % perByte == 0) byte = Byte();
        Put(IndexOf(byte, n));
    }
    if ((next - first) % 2 != 0) Byte();
}

std::uint8_t* RunReader::Place() const {
    const auto place = static_cast<std::size_t>(header.topDown ? row : picture.rows - 1 - row);
    return picture.pixels.get() + place * picture.RowBytes() + column;
}

// Some writers also pack the padding at the end of a row. Such pixels past the row are dropped.
void RunReader::Put(int index) {
    if (row >= picture.rows) throw DamageProblem("a run leaves the picture");
    if (column < picture.columns) {
        *Place() = static_cast<std::uint8_t>(index);
        ++column;
    }
}

void RunReader::SkipTo(int toRow, int toColumn) {
    const auto skip = [this](int to) {
        if (to <= column) return;
        std::fill_n(Place(), to - column, std::uint8_t{0});
        column = to;
    };
    for (; row < std::min(toRow, picture.rows); ++row, column = 0) skip(picture.columns);
    if (row < picture.rows) skip(std::min(toColumn, picture.columns));
}

void SetTable(const Bytes& file, const Header& header, Picture& picture) {
    const std::size_t first = kInfo + std::size_t{header.infoBytes};
    // Files of the oldest version may have fewer entries than the pixels can refer to, and do not
    // state the number.
    const std::size_t room = (header.firstPixel - first) / header.EntryBytes();
    const std::size_t most = std::min<std::size_t>(std::size_t{1} << header.bits, room);
    const std::size_t colors =
        header.colors == 0 ? most : std::min<std::size_t>(most, header.colors);
    if (colors == 0) throw DamageProblem("there is no colour table");
    picture.colors = static_cast<int>(colors);
    for (int index = 0; index < picture.colors; ++index) {
        const std::size_t entry = first + static_cast<std::size_t>(index) * header.EntryBytes();
        const std::uint32_t color = ReadLE(file, entry, 3); // rgbBlue, rgbGreen, rgbRed
        SetTableEntry(picture.table, index, UnpackColor(color));
    }
}

void UnpackRows(const Bytes& file, const Header& header, const Picture& picture) {
    CheckRows(file, header);
    const int perByte = 8 / header.bits, mask = (1 << header.bits) - 1;
    std::uint8_t* to = picture.pixels.get();
    for (int row = 0; row < picture.rows; ++row) {
        const std::uint8_t* const from = StoredRow(file, header, row);
        for (int column = 0; column < picture.columns; ++column) {
            const int shift = (perByte - 1 - column % perByte) * header.bits;
            *to++ = static_cast<std::uint8_t>(from[column / perByte] >> shift & mask);
        }
    }
}

Picture ReadIndexed(const Bytes& file, const Header& header) {
    Picture picture = MakePicture(Picture::Kind::indexed, header.rows, header.columns);
    SetTable(file, header, picture);
    if (header.compression == kPlain)
        UnpackRows(file, header, picture);
    else
        RunReader(file, header, picture).Read();
    const std::uint8_t* const first = picture.pixels.get();
    const int highest = *std::max_element(first, first + picture.PixelBytes());
    if (highest >= picture.colors)
        throw DamageProblem("a pixel has colour " + std::to_string(highest) + " of a table of " +
                            std::to_string(picture.colors));
    picture.notes.bits = header.bits;
    return picture;
}

} // namespace

Picture ReadBmp(InputFile& input) {
    const Bytes file = input.ReadRest();
    const Header header = ReadHeader(file);
    CheckForm(header);
    Picture picture =
        header.HasTable() ? ReadIndexed(file, header) : ColorReader(file, header).Read();
    DropOpaqueAlpha(picture);
    picture.notes.format = "BMP";
    TakeProfile(file, header, picture.notes);
    return picture;
}

} // namespace gif89
