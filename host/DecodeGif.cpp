#include "DecodeGif.h"

#include "Picture.h"
#include "Problem.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>
#include <vector>

namespace gif89 {

namespace {

constexpr int kMostWidth = 12; // bits of a code
constexpr int kMostStrings = 1 << kMostWidth;
constexpr int kCopyBytes = 16;

[[noreturn]] void Fail(std::size_t offset, const std::string& sentence) {
    throw Problem("at byte " + std::to_string(offset) + ": " + sentence);
}

/// Walks through the file; `what` names the field that is being read.
class ByteReader {
  public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : file(bytes) {}

    std::span<const std::uint8_t> Bytes(std::size_t count, const char* what) {
        if (file.size() - offset < count)
            Fail(file.size(), std::string("the file ends inside the ") + what);
        offset += count;
        return file.subspan(offset - count, count);
    }
    int Byte(const char* what) { return Bytes(1, what)[0]; }
    int WordLE(const char* what) {
        const auto bytes = Bytes(2, what);
        return bytes[0] | bytes[1] << 8;
    }
    void ExpectByte(int expected, const char* what) { Expect(Byte(what), expected, 1, what); }
    void ExpectWord(int expected, const char* what) { Expect(WordLE(what), expected, 2, what); }
    /// Checks a value that ends at the current offset.
    void Expect(int value, int expected, std::size_t bytes, const char* what) const {
        if (value == expected) return;
        Fail(offset - bytes, std::string("the ") + what + " is " + std::to_string(value) +
                                 ", expected " + std::to_string(expected));
    }

    std::size_t Offset() const { return offset; }
    std::size_t Left() const { return file.size() - offset; }

  private:
    std::span<const std::uint8_t> file;
    std::size_t offset = 0;
};

/// Takes codes from data sub-blocks, which must have been walked through before. Bits are fetched
/// eight bytes at a time where the sub-block has them.
class CodeReader {
  public:
    CodeReader(std::span<const std::uint8_t> bytes, std::size_t firstBlock)
        : file(bytes.data()), next(firstBlock) {}

    /// -1 where the data end before the code does.
    int NextCode(int width) {
        if (bitCount < width && !Fetch(width)) return -1;
        const auto code = static_cast<int>(bits & ((1U << width) - 1));
        bits >>= width;
        bitCount -= width;
        return code;
    }
    bool DataEnded() {
        if (blockLeft + bitCount / 8 == 0) blockLeft = file[next++];
        return blockLeft + bitCount / 8 == 0;
    }
    /// Behind the last byte that a code has taken bits from, or behind the terminator. Whole bytes
    /// are left over only from the sub-block that `next` is in.
    std::size_t Offset() const { return next - static_cast<std::size_t>(bitCount / 8); }

  private:
    bool Fetch(int width) {
        while (bitCount < width) {
            if (blockLeft == 0 && (blockLeft = file[next++]) == 0) {
                bitCount = 0;
                return false;
            }
            const int taken = blockLeft < 8 ? 1 : (63 - bitCount) / 8;
            bits |= (taken == 1 ? file[next] : LoadEightBytes(file + next)) << bitCount;
            next += static_cast<std::size_t>(taken);
            blockLeft -= taken;
            bitCount += 8 * taken;
        }
        return true;
    }
    static std::uint64_t LoadEightBytes(const std::uint8_t* bytes) {
        std::uint64_t word = 0;
        if constexpr (std::endian::native == std::endian::little)
            std::memcpy(&word, bytes, sizeof word);
        else
            for (int i = 0; i < 8; ++i) word |= std::uint64_t{bytes[i]} << 8 * i;
        return word;
    }

    const std::uint8_t* file;
    std::size_t next;
    int blockLeft = 0;
    std::uint64_t bits = 0; // above bitCount lies a part of the byte that comes next, or nothing
    int bitCount = 0;
};

void ReadHeader(ByteReader& reader, DecodedGif& gif) {
    const auto signature = reader.Bytes(6, "signature");
    if (!std::equal(signature.begin(), signature.end(), "GIF89a"))
        Fail(0, "the signature is not GIF89a");
    gif.columns = reader.WordLE("screen width");
    gif.rows = reader.WordLE("screen height");
    if (std::min(gif.rows, gif.columns) < 1 || std::max(gif.rows, gif.columns) > kLargestSide)
        Fail(6, "the screen has " + std::to_string(gif.columns) + " x " + std::to_string(gif.rows) +
                    " pixels, expected sides of 1 to " + std::to_string(kLargestSide));
    const int packed = reader.Byte("screen descriptor");
    if ((packed & 0x80) == 0) Fail(10, "there is no global colour table");
    gif.colors = 2 << (packed & 7);
    reader.Bytes(2, "screen descriptor"); // background and aspect ratio say nothing of the pixels
}

void ReadColorTable(ByteReader& reader, DecodedGif& gif) {
    const auto bytes = reader.Bytes(3 * static_cast<std::size_t>(gif.colors), "colour table");
    const std::uint8_t* entry = bytes.data();
    for (int i = 0; i < gif.colors; ++i, entry += 3)
        SetTableEntry(gif.table, i, {0, entry[0], entry[1], entry[2]});
}

void ReadComment(ByteReader& reader, DecodedGif& gif) {
    if (gif.comment) Fail(reader.Offset(), "a second comment, expected one at most");
    gif.comment.emplace();
    while (const int count = reader.Byte("comment")) {
        const auto text = reader.Bytes(static_cast<std::size_t>(count), "comment");
        gif.comment->append(text.begin(), text.end());
    }
}

void ReadGraphicControl(ByteReader& reader, DecodedGif& gif) {
    if (gif.transparentIndex >= 0) Fail(reader.Offset(), "a second graphic control extension");
    reader.ExpectByte(4, "graphic control's size");
    reader.ExpectByte(1,
                      "graphic control's flag byte"); // only ever written for a transparent index
    reader.ExpectWord(0, "delay time");
    gif.transparentIndex = reader.Byte("transparent index");
    if (gif.transparentIndex >= gif.colors)
        Fail(reader.Offset() - 1, "the transparent index " + std::to_string(gif.transparentIndex) +
                                      " lies past the table of " + std::to_string(gif.colors));
    reader.ExpectByte(0, "end of the graphic control");
}

/// Reads extensions up to the separator that announces the image.
void ReadExtensions(ByteReader& reader, DecodedGif& gif) {
    for (int block = reader.Byte("block list"); block != 0x2C; block = reader.Byte("block list")) {
        const std::size_t start = reader.Offset() - 1;
        const int label = block == 0x21 ? reader.Byte("extension label") : -1;
        if (label == 0xFE)
            ReadComment(reader, gif);
        else if (label == 0xF9)
            ReadGraphicControl(reader, gif);
        else
            Fail(start, "expected a comment, a graphic control extension or an image here");
    }
}

void ReadImageDescriptor(ByteReader& reader, DecodedGif& gif) {
    reader.ExpectWord(0, "image's left edge");
    reader.ExpectWord(0, "image's top edge");
    reader.ExpectWord(gif.columns, "image width");
    reader.ExpectWord(gif.rows, "image height");
    const int packed = reader.Byte("image flags");
    reader.Expect(packed & ~0x40, 0, 1, "set of image flags besides interlacing");
    gif.interlaced = packed != 0;
}

/// Skips the data sub-blocks and their terminator; the bytes of data in them.
std::size_t WalkDataBlocks(ByteReader& reader) {
    std::size_t total = 0;
    while (const int count = reader.Byte("image data"))
        total += reader.Bytes(static_cast<std::size_t>(count), "image data").size();
    return total;
}

/// Memory is asked for only when the data could hold that many pixels: no code stands for more
/// symbols than there were codes up to it, nor for more than the string table has entries.
void AllocateIndices(std::size_t offset, std::size_t dataBytes, int rootSize, DecodedGif& gif) {
    const std::size_t codes = dataBytes * 8 / static_cast<std::size_t>(rootSize + 1);
    const std::size_t most = codes * std::min<std::size_t>(codes, kMostStrings);
    const std::size_t pixels =
        static_cast<std::size_t>(gif.rows) * static_cast<std::size_t>(gif.columns);
    if (most < pixels)
        Fail(offset, std::to_string(dataBytes) + " bytes of data cannot hold " +
                         std::to_string(pixels) + " pixels");
    gif.indices = std::make_unique_for_overwrite<std::uint8_t[]>(pixels + kCopyBytes);
}

/// The strings that codes stand for, as places where their symbols are already: those of single
/// symbols in a list, all others in the pixels, since each is the string before it and a symbol
/// more.
struct Strings {
    explicit Strings(int roots) {
        for (int i = 0; i < roots; ++i) {
            symbols[i] = static_cast<std::uint8_t>(i);
            start[i] = symbols + i;
            length[i] = 1;
        }
    }
    const std::uint8_t* start[kMostStrings];
    std::uint16_t length[kMostStrings];
    std::uint8_t symbols[256 + kCopyBytes];
};

/// Copies a string to behind it; up to kCopyBytes of what follows it may come along, since most
/// strings are short, and copying a fixed number of bytes is faster than counting them.
void CopyString(const std::uint8_t* string, int length, std::uint8_t* pixel) {
    if (length > kCopyBytes) {
        std::memcpy(pixel, string, static_cast<std::size_t>(length));
        return;
    }
    std::uint8_t bytes[kCopyBytes]; // what follows may overlap the pixels
    std::memcpy(bytes, string, kCopyBytes);
    std::memcpy(pixel, bytes, kCopyBytes);
}

/// Why an expansion went no further.
enum class Stop { endCode, endOfData, impossibleCode, wrongIndex, surplusPixels };

/// How far an expansion came.
struct Expansion {
    Stop stop;
    int lastCode;
    const std::uint8_t* end; ///< behind the last pixel
    CodeReader codes;
};

/// Expands into pixels in the order of the file, with room for kCopyBytes more behind them. The
/// reader comes and goes by value, so that its bits can stay in registers. The plain way is to go
/// through a table of prefixes, symbol by symbol and back.
Expansion Expand(CodeReader codes, int rootSize, int colors, std::uint8_t* pixel,
                 const std::uint8_t* end) {
    const int clearCode = 1 << rootSize;
    Strings strings(clearCode);
    int width = rootSize + 1, nextCode = clearCode + 2;
    const std::uint8_t* last = nullptr; // the pixels of the code before
    for (;;) {
        const int code = codes.NextCode(width);
        const auto stopped = [&](Stop reason) { return Expansion{reason, code, pixel, codes}; };
        if (code == clearCode) {
            width = rootSize + 1;
            nextCode = clearCode + 2;
            last = nullptr;
            continue;
        }
        if (code == clearCode + 1) return stopped(Stop::endCode);
        if (code < 0) return stopped(Stop::endOfData);

        const int learnt = nextCode;
        if (last && learnt < kMostStrings) {
            strings.start[learnt] = last;
            strings.length[learnt] = static_cast<std::uint16_t>(pixel - last + 1);
            ++nextCode;
            if (nextCode == 1 << width && width < kMostWidth) ++width;
        }
        if (code >= nextCode) return stopped(Stop::impossibleCode);
        if (code >= colors && code < clearCode) return stopped(Stop::wrongIndex);

        const int length = strings.length[code];
        if (length > end - pixel) return stopped(Stop::surplusPixels);
        // The string learnt just now ends with a pixel that is written here: its own first one.
        const bool isLearnt = code == learnt;
        CopyString(strings.start[code], length - isLearnt, pixel);
        if (isLearnt) pixel[length - 1] = *pixel;
        last = pixel;
        pixel += length;
    }
}

/// For each row of the picture its place in the file.
std::vector<int> PlacesInFile(const DecodedGif& gif) {
    constexpr int kFirstRow[] = {0, 4, 2, 1}, kRowStep[] = {8, 8, 4, 2};
    std::vector<int> places(static_cast<std::size_t>(gif.rows));
    int place = 0;
    for (int pass = 0; pass < (gif.interlaced ? 4 : 1); ++pass)
        for (int row = kFirstRow[pass]; row < gif.rows; row += gif.interlaced ? kRowStep[pass] : 1)
            places[static_cast<std::size_t>(row)] = place++;
    return places;
}

/// Moves every row from its place in the file to where it belongs, one round of moves after the
/// other: a row is set aside, the one that belongs there takes its place, and so on.
void SortRows(std::vector<int> places, DecodedGif& gif) {
    const auto columns = static_cast<std::size_t>(gif.columns);
    const auto pixels = [&](int row) {
        return gif.indices.get() + static_cast<std::size_t>(row) * columns;
    };
    std::vector<std::uint8_t> aside(columns);
    for (int first = 0; first < gif.rows; ++first) {
        int row = first;
        int place = std::exchange(places[static_cast<std::size_t>(row)], row);
        if (place == row) continue;
        std::copy_n(pixels(first), columns, aside.data());
        while (place != first) {
            std::copy_n(pixels(place), columns, pixels(row));
            row = place;
            place = std::exchange(places[static_cast<std::size_t>(row)], row);
        }
        std::copy_n(aside.data(), columns, pixels(row));
    }
}

[[noreturn]] void FailAtPixel(const Expansion& expansion, const DecodedGif& gif,
                              const std::vector<int>& places) {
    const std::ptrdiff_t done = expansion.end - gif.indices.get();
    const auto row = std::find(places.begin(), places.end(), done / gif.columns) - places.begin();
    const auto reason = [&]() -> std::string {
        switch (expansion.stop) {
        case Stop::endOfData:
            return "the image data end early";
        case Stop::impossibleCode:
            return "an impossible code";
        case Stop::wrongIndex:
            return "index " + std::to_string(expansion.lastCode) + " past the table of " +
                   std::to_string(gif.colors);
        default:
            return "the end code instead of a pixel";
        }
    };
    Fail(expansion.codes.Offset(), reason() + " for row " + std::to_string(row) + ", column " +
                                       std::to_string(done % gif.columns));
}

void ExpandPixels(CodeReader firstBlock, int rootSize, DecodedGif& gif) {
    std::uint8_t* const pixels = gif.indices.get();
    const std::uint8_t* const end = pixels + std::ptrdiff_t{gif.rows} * gif.columns;
    Expansion expansion = Expand(firstBlock, rootSize, gif.colors, pixels, end);
    CodeReader& codes = expansion.codes;
    const std::vector<int> places = PlacesInFile(gif);
    if (expansion.stop == Stop::surplusPixels ||
        (expansion.end == end && expansion.stop != Stop::endCode))
        Fail(codes.Offset(), "expected the end code after the last pixel");
    if (expansion.end != end) FailAtPixel(expansion, gif, places);
    if (!codes.DataEnded()) Fail(codes.Offset(), "more image data after the end code");
    SortRows(places, gif);
}

} // namespace

DecodedGif DecodeGif(std::span<const std::uint8_t> file) {
    DecodedGif gif;
    ByteReader reader(file);
    ReadHeader(reader, gif);
    ReadColorTable(reader, gif);
    ReadExtensions(reader, gif);
    ReadImageDescriptor(reader, gif);
    const int rootSize = reader.Byte("minimum code size");
    int smallest = 2;
    while (1 << smallest < gif.colors) ++smallest;
    reader.Expect(rootSize, smallest, 1, "minimum code size");

    const std::size_t firstBlock = reader.Offset();
    const std::size_t dataBytes = WalkDataBlocks(reader);
    reader.ExpectByte(0x3B, "trailer");
    if (reader.Left() != 0)
        Fail(reader.Offset(), std::to_string(reader.Left()) + " bytes after the trailer");

    AllocateIndices(firstBlock, dataBytes, rootSize, gif);
    ExpandPixels(CodeReader(file, firstBlock), rootSize, gif);
    return gif;
}

} // namespace gif89
