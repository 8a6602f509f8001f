#include "DecodeGif.h"

#include "LZW.h"
#include "MemoryManager.h"
#include "Picture.h"
#include "Problem.h"

#include <algorithm>
#include <new>

namespace gif89 {

namespace {

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

/// Feeds the expander with codes from data sub-blocks, which must have been walked through before.
class CodeReader {
  public:
    explicit CodeReader(ByteReader firstBlock) : reader(firstBlock) {}

    /// -1 where the data end before the code does.
    static short GetCode(std::intptr_t refcon, short width) {
        return reinterpret_cast<CodeReader*>(refcon)->NextCode(width);
    }
    bool DataEnded() {
        if (blockLeft == 0) blockLeft = NextBlock();
        return blockLeft == 0;
    }
    bool Exhausted() const { return exhausted; }
    std::size_t Offset() const { return reader.Offset(); }

  private:
    int NextBlock() { return exhausted ? 0 : reader.Byte("data sub-block"); }

    short NextCode(int width) {
        for (; bitCount < width; bitCount += 8) {
            if (DataEnded()) {
                exhausted = true;
                return -1;
            }
            bits |= static_cast<unsigned>(reader.Byte("data sub-block")) << bitCount;
            --blockLeft;
        }
        const unsigned code = bits & ((1U << width) - 1);
        bits >>= width;
        bitCount -= width;
        return static_cast<short>(code);
    }

    ByteReader reader;
    int blockLeft = 0;
    unsigned bits = 0;
    int bitCount = 0;
    bool exhausted = false;
};

/// The coder's string table, given back when the decoder is done or throws.
class StringTable {
  public:
    StringTable() : handle(NewHandle(kLZWStringBytes)) {
        if (!handle) throw std::bad_alloc();
    }
    StringTable(const StringTable&) = delete;
    StringTable& operator=(const StringTable&) = delete;
    ~StringTable() { DisposeHandle(handle); }
    Handle Get() const { return handle; }

  private:
    Handle handle;
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
    const std::size_t most = codes * std::min<std::size_t>(codes, kLZWStrings);
    const std::size_t pixels =
        static_cast<std::size_t>(gif.rows) * static_cast<std::size_t>(gif.columns);
    if (most < pixels)
        Fail(offset, std::to_string(dataBytes) + " bytes of data cannot hold " +
                         std::to_string(pixels) + " pixels");
    gif.indices = std::make_unique_for_overwrite<std::uint8_t[]>(pixels);
}

void ExpandRow(LZWData& lzw, const CodeReader& codes, int row, DecodedGif& gif) {
    std::uint8_t* pixel = gif.indices.get() + std::ptrdiff_t{row} * gif.columns;
    for (int column = 0; column < gif.columns; ++column) {
        const int index = LZWExpand(&lzw);
        const auto failHere = [&](const std::string& what) {
            Fail(codes.Offset(),
                 what + " for row " + std::to_string(row) + ", column " + std::to_string(column));
        };
        if (LZWExpandEnded(&lzw))
            failHere(codes.Exhausted() ? "the image data end early"
                     : lzw.status != 0 ? "an impossible code"
                                       : "the end code instead of a pixel");
        if (index >= gif.colors)
            failHere("index " + std::to_string(index) + " past the table of " +
                     std::to_string(gif.colors));
        *pixel++ = static_cast<std::uint8_t>(index);
    }
}

void ExpandPixels(ByteReader firstBlock, int rootSize, DecodedGif& gif) {
    constexpr int kFirstRow[] = {0, 4, 2, 1}, kRowStep[] = {8, 8, 4, 2};
    const StringTable strings;
    CodeReader codes(firstBlock);
    LZWData lzw;
    lzw.stringTable = strings.Get();
    LZWExpandStart(&lzw, static_cast<short>(rootSize), 0, CodeReader::GetCode,
                   reinterpret_cast<std::intptr_t>(&codes));
    for (int pass = 0; pass < (gif.interlaced ? 4 : 1); ++pass)
        for (int row = kFirstRow[pass]; row < gif.rows; row += gif.interlaced ? kRowStep[pass] : 1)
            ExpandRow(lzw, codes, row, gif);

    LZWExpand(&lzw);
    if (!LZWExpandEnded(&lzw) || LZWExpandEnd(&lzw) != 0)
        Fail(codes.Offset(), "expected the end code after the last pixel");
    if (!codes.DataEnded()) Fail(codes.Offset(), "more image data after the end code");
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

    const ByteReader firstBlock = reader;
    const std::size_t dataBytes = WalkDataBlocks(reader);
    reader.ExpectByte(0x3B, "trailer");
    if (reader.Left() != 0)
        Fail(reader.Offset(), std::to_string(reader.Left()) + " bytes after the trailer");

    AllocateIndices(firstBlock.Offset(), dataBytes, rootSize, gif);
    ExpandPixels(firstBlock, rootSize, gif);
    return gif;
}

} // namespace gif89
