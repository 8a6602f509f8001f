#include "ScanGif.h"

#include "Picture.h"
#include "Problem.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>

namespace gif89 {

namespace {

constexpr int kMostWidth = 12; // bits of a code
constexpr int kMostStrings = 1 << kMostWidth;
constexpr int kCopyBytes = 16;

[[noreturn]] void Fail(std::size_t offset, const std::string& sentence) {
    throw Problem("at byte " + std::to_string(offset) + ": " + sentence);
}

[[noreturn]] void FailAtEnd(std::size_t offset, const char* what) {
    Fail(offset, std::string("the file ends inside the ") + what);
}

/// Reads the fields of the file in order; `what` names the field, for error messages.
class GifReader {
  public:
    explicit GifReader(GifSource& bytes) : source(bytes) {}

    /// Valid until the next call.
    std::span<const std::uint8_t> Bytes(std::size_t count, const char* what) {
        const auto bytes = source.From(offset, count);
        if (bytes.size() < count) FailAtEnd(offset + bytes.size(), what);
        offset += count;
        return bytes.first(count);
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
    void ExpectEnd() {
        std::size_t left = 0, asked = 0;
        do {
            asked = left + 1;
            left = source.From(offset, asked).size();
        } while (left >= asked);
        if (left == 0) return;
        Fail(offset, std::to_string(left) + " bytes after the trailer");
    }

    std::size_t Offset() const { return offset; }
    void SkipTo(std::size_t newOffset) { offset = newOffset; }

  private:
    GifSource& source;
    std::size_t offset = 0;
};

/// Reads codes from data sub-blocks. It loads eight bytes at a time while the sub-block has as
/// many.
class CodeReader {
  public:
    CodeReader(GifSource& bytes, std::size_t firstBlock)
        : source(&bytes), windowOffset(firstBlock) {}

    /// -1 where the data end before the code does.
    int NextCode(int width) {
        if (bitCount < width && !Fetch(width)) return -1;
        const auto code = static_cast<int>(bits & ((1U << width) - 1));
        bits >>= width;
        bitCount -= width;
        return code;
    }
    bool DataEnded() {
        if (blockLeft + bitCount / 8 == 0) blockLeft = OpenBlock();
        return blockLeft + bitCount / 8 == 0;
    }
    /// The offset behind the last byte of which a code has used bits, or behind the terminator.
    /// Whole bytes that were loaded but not used all lie in the present sub-block.
    std::size_t Offset() const { return NextOffset() - static_cast<std::size_t>(bitCount / 8); }

  private:
    bool Fetch(int width) {
        while (bitCount < width) {
            if (blockLeft == 0 && (blockLeft = OpenBlock()) == 0) {
                bitCount = 0;
                return false;
            }
            const int taken = blockLeft < 8 ? 1 : (63 - bitCount) / 8;
            bits |= (taken == 1 ? *next : LoadEightBytes(next)) << bitCount;
            next += taken;
            blockLeft -= taken;
            bitCount += 8 * taken;
        }
        return true;
    }
    /// Returns the number of bytes in the next sub-block, which is then in the window as a whole.
    int OpenBlock() {
        constexpr std::ptrdiff_t kMost = 256; // including the count byte
        if (end - next < kMost) MoveWindow();
        return *next++;
    }
    void MoveWindow() {
        const std::size_t offset = NextOffset();
        auto bytes = source->From(offset, 1);
        if (!bytes.empty()) bytes = source->From(offset, bytes[0] + std::size_t{1});
        if (bytes.empty() || bytes.size() <= bytes[0])
            FailAtEnd(offset + bytes.size(), "image data");
        next = window = bytes.data();
        end = window + bytes.size();
        windowOffset = offset;
    }
    std::size_t NextOffset() const {
        return windowOffset + static_cast<std::size_t>(next - window);
    }

    static std::uint64_t LoadEightBytes(const std::uint8_t* bytes) {
        std::uint64_t word = 0;
        if constexpr (std::endian::native == std::endian::little)
            std::memcpy(&word, bytes, sizeof word);
        else
            for (int i = 0; i < 8; ++i) word |= std::uint64_t{bytes[i]} << 8 * i;
        return word;
    }

    GifSource* source;
    const std::uint8_t* window = nullptr;
    const std::uint8_t* next = nullptr;
    const std::uint8_t* end = nullptr;
    std::size_t windowOffset; // place of `window` in the file
    int blockLeft = 0;
    int bitCount = 0;
    // The next bits of the data, bitCount of them. Bits above these are zero or belong to the next
    // byte, so that loading that byte again does not change them.
    std::uint64_t bits = 0;
};

void ReadHeader(GifReader& reader, GifHead& gif) {
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
    reader.Bytes(2, "screen descriptor"); // background and aspect ratio do not matter to the pixels
}

void ReadColorTable(GifReader& reader, GifHead& gif) {
    const auto bytes = reader.Bytes(3 * static_cast<std::size_t>(gif.colors), "colour table");
    const std::uint8_t* entry = bytes.data();
    for (int i = 0; i < gif.colors; ++i, entry += 3)
        SetTableEntry(gif.table, i, {0, entry[0], entry[1], entry[2]});
}

void ReadComment(GifReader& reader, GifHead& gif) {
    if (gif.comment) Fail(reader.Offset(), "a second comment, expected one at most");
    gif.comment.emplace();
    while (const int count = reader.Byte("comment")) {
        const auto text = reader.Bytes(static_cast<std::size_t>(count), "comment");
        gif.comment->append(text.begin(), text.end());
    }
}

void ReadGraphicControl(GifReader& reader, GifHead& gif) {
    if (gif.transparentIndex >= 0) Fail(reader.Offset(), "a second graphic control extension");
    reader.ExpectByte(4, "graphic control's size");
    reader.ExpectByte(1, "graphic control's flag byte"); // a transparent index and nothing else
    reader.ExpectWord(0, "delay time");
    gif.transparentIndex = reader.Byte("transparent index");
    if (gif.transparentIndex >= gif.colors)
        Fail(reader.Offset() - 1, "the transparent index " + std::to_string(gif.transparentIndex) +
                                      " lies past the table of " + std::to_string(gif.colors));
    reader.ExpectByte(0, "end of the graphic control");
}

/// Reads extensions up to the separator that announces the image.
void ReadExtensions(GifReader& reader, GifHead& gif) {
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

void ReadImageDescriptor(GifReader& reader, GifHead& gif) {
    reader.ExpectWord(0, "image's left edge");
    reader.ExpectWord(0, "image's top edge");
    reader.ExpectWord(gif.columns, "image width");
    reader.ExpectWord(gif.rows, "image height");
    const int packed = reader.Byte("image flags");
    reader.Expect(packed & ~0x40, 0, 1, "set of image flags besides interlacing");
    gif.interlaced = packed != 0;
}

/// Row and column of the next pixel of the file.
class PixelPlace {
  public:
    explicit PixelPlace(const GifHead& head) : gif(head) {}

    /// Passes pixels to the sink, row by row.
    void Give(const std::uint8_t* pixels, const std::uint8_t* end, GifSink& sink) {
        while (pixels < end) {
            const std::ptrdiff_t count =
                std::min<std::ptrdiff_t>(gif.columns - column, end - pixels);
            sink.Take(row, column, {pixels, static_cast<std::size_t>(count)});
            pixels += count;
            column += static_cast<int>(count);
            if (column == gif.columns) NextRow();
        }
    }
    int Row() const { return row; }
    int Column() const { return column; }

  private:
    void NextRow() {
        constexpr int kFirstRow[] = {0, 4, 2, 1}, kRowStep[] = {8, 8, 4, 2};
        column = 0;
        row += gif.interlaced ? kRowStep[pass] : 1;
        while (gif.interlaced && row >= gif.rows && pass < 3) row = kFirstRow[++pass];
    }

    const GifHead& gif;
    int row = 0, column = 0;
    int pass = 0; // of an interlaced picture
};

/// Expands codes into pixels. Each string of the table is stored as a place in the pixels since the
/// last clear code: a new string is that of the previous code and one symbol more, and both have
/// just been written there. Copying from there is faster than following a chain of prefixes.
class Expander {
  public:
    Expander(const GifHead& head, int codeRootSize, GifSink& pixelSink)
        : gif(head), rootSize(codeRootSize), place(head), sink(pixelSink),
          pixelsLeft(std::int64_t{head.rows} * head.columns),
          memory(
              std::make_unique_for_overwrite<std::uint8_t[]>(kSymbols + MostHeld() + kCopyBytes)),
          held(memory.get() + kSymbols) {
        for (int i = 0; i < kSymbols; ++i) {
            memory[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
            start[i] = memory.get() + i;
            length[i] = 1;
        }
    }

    void Run(CodeReader& codes);

  private:
    static constexpr int kSymbols = 256;
    /// Room for pixels that come after the table is full. No string refers to those, so the room is
    /// used again when they have been handed out.
    static constexpr std::int64_t kSpare = 1 << 16;
    /// The most pixels that strings can refer to: each code adds one string, which is at most one
    /// symbol longer than the longest before it.
    static constexpr std::int64_t kMostLookedBackAt =
        std::int64_t{kMostStrings} * (kMostStrings + 1) / 2;

    /// Why an expansion ended.
    enum class Stop { endCode, endOfData, impossibleCode, wrongIndex, surplusPixels };
    /// Where an expansion ended.
    struct Expansion {
        Stop stop;
        int lastCode;
        const std::uint8_t* end; ///< behind the last pixel
        CodeReader codes;
    };

    std::size_t MostHeld() const {
        return static_cast<std::size_t>(
            std::min(pixelsLeft, kMostLookedBackAt + kMostStrings + kSpare));
    }
    Expansion Expand(CodeReader codes);
    /// Passes the pixels between both pointers to the sink.
    void Give(const std::uint8_t* from, const std::uint8_t* end) {
        pixelsLeft -= end - from;
        place.Give(from, end, sink);
    }
    [[noreturn]] void FailHere(const Expansion& expansion) const;

    const GifHead& gif;
    const int rootSize;
    PixelPlace place;
    GifSink& sink;
    std::int64_t pixelsLeft; ///< pixels of the image that the sink has not got yet
    const std::unique_ptr<std::uint8_t[]> memory;
    std::uint8_t* const held; ///< pixels since the last clear code
    const std::uint8_t* start[kMostStrings];
    std::uint16_t length[kMostStrings];
};

/// Copies a string to `pixel`. A short one is copied as kCopyBytes bytes, whatever its length,
/// because that is faster; the bytes too many are overwritten by the next string.
void CopyString(const std::uint8_t* string, int length, std::uint8_t* pixel) {
    if (length > kCopyBytes) {
        std::memcpy(pixel, string, static_cast<std::size_t>(length));
        return;
    }
    std::uint8_t bytes[kCopyBytes]; // source and target may overlap
    std::memcpy(bytes, string, kCopyBytes);
    std::memcpy(pixel, bytes, kCopyBytes);
}

// The reader is passed and returned by value, so that its bits can stay in registers.
Expander::Expansion Expander::Expand(CodeReader codes) {
    const int clearCode = 1 << rootSize;
    int width = rootSize + 1, nextCode = clearCode + 2;
    std::uint8_t* pixel = held;
    const std::uint8_t* given = held;   // the sink has got the pixels up to here
    const std::uint8_t* last = nullptr; // the pixels of the previous code
    std::uint8_t* fullSince = nullptr;  // where the pixels begin that came after the table was full
    for (;;) {
        const int code = codes.NextCode(width);
        const auto stopped = [&](Stop reason) {
            Give(given, pixel);
            return Expansion{reason, code, pixel, codes};
        };
        if (code == clearCode) {
            Give(given, pixel);
            given = pixel = held;
            width = rootSize + 1;
            nextCode = clearCode + 2;
            last = fullSince = nullptr;
            continue;
        }
        if (code == clearCode + 1) return stopped(Stop::endCode);
        if (code < 0) return stopped(Stop::endOfData);

        const int learnt = nextCode;
        if (learnt < kMostStrings) {
            if (last) {
                start[learnt] = last;
                length[learnt] = static_cast<std::uint16_t>(pixel - last + 1);
                ++nextCode;
                if (nextCode == 1 << width && width < kMostWidth) ++width;
            }
        } else if (!fullSince) {
            fullSince = pixel;
        } else if (pixel - fullSince > kSpare - kMostStrings) {
            Give(given, pixel);
            given = pixel = fullSince;
        }
        if (code >= nextCode) return stopped(Stop::impossibleCode);
        if (code >= gif.colors && code < clearCode) return stopped(Stop::wrongIndex);

        const int count = length[code];
        if (count > pixelsLeft - (pixel - given)) return stopped(Stop::surplusPixels);
        // The string that was added just now ends with its own first pixel, which is not there yet.
        const bool isLearnt = code == learnt;
        CopyString(start[code], count - isLearnt, pixel);
        if (isLearnt) pixel[count - 1] = *pixel;
        last = pixel;
        pixel += count;
    }
}

void Expander::FailHere(const Expansion& expansion) const {
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
    Fail(expansion.codes.Offset(), reason() + " for row " + std::to_string(place.Row()) +
                                       ", column " + std::to_string(place.Column()));
}

void Expander::Run(CodeReader& codes) {
    const Expansion expansion = Expand(codes);
    codes = expansion.codes;
    const bool isComplete = pixelsLeft == 0;
    if (expansion.stop == Stop::surplusPixels || (isComplete && expansion.stop != Stop::endCode))
        Fail(codes.Offset(), "expected the end code after the last pixel");
    if (!isComplete) FailHere(expansion);
    if (!codes.DataEnded()) Fail(codes.Offset(), "more image data after the end code");
}

} // namespace

void ScanGif(GifSource& source, GifSink& sink) {
    GifHead gif;
    GifReader reader(source);
    ReadHeader(reader, gif);
    ReadColorTable(reader, gif);
    ReadExtensions(reader, gif);
    ReadImageDescriptor(reader, gif);
    const int rootSize = reader.Byte("minimum code size");
    int smallest = 2;
    while (1 << smallest < gif.colors) ++smallest;
    reader.Expect(rootSize, smallest, 1, "minimum code size");

    sink.Begin(gif, reader.Offset(), rootSize);
    CodeReader codes(source, reader.Offset());
    const auto expander = std::make_unique<Expander>(gif, rootSize, sink);
    expander->Run(codes);
    reader.SkipTo(codes.Offset());
    reader.ExpectByte(0x3B, "trailer");
    reader.ExpectEnd();
}

} // namespace gif89
