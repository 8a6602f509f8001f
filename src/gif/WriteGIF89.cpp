#include "WriteGIF89.h"

#include "FileManager.h"
#include "MemoryManager.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

namespace {

constexpr int kBlockBytes = 255; // the most that a data sub-block can hold
constexpr int kBlockBits = kBlockBytes * 8;

constexpr int kExtensionIntroducer = 0x21, kCommentLabel = 0xFE, kGraphicControlLabel = 0xF9;
constexpr int kImageSeparator = 0x2C, kBlockTerminator = 0, kTrailer = 0x3B;

// The rows of each pass, stored one pass after the other.
struct Pass {
    int firstRow, step;
};
constexpr Pass kProgressive[] = {{0, 1}};
constexpr Pass kInterlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};

} // namespace

short WriteGIF89(const FSSpec* file, const Point* size, const unsigned char* pixels,
                 std::int32_t rowBytes, Boolean interlace, short transIndex,
                 const RGBLookUpTable* table, short numColors, const char* comment) {
    GIF89Writer writer(file, numColors);
    writer.OutputHeaderInfo(size);
    writer.OutputCLUT(table);
    if (comment) writer.OutputCommentBlock(comment);
    if (transIndex != -1) writer.OutputGraphicsExtension(1, transIndex);
    writer.OutputImageDesc(size, interlace);
    writer.OutputData(pixels, size, rowBytes, interlace);
    return writer.Done();
}

GIF89Writer::GIF89Writer(const FSSpec* file, std::int32_t colors)
    : numColors(colors), colorBits(CeilLog2(colors)) {
    std::int16_t opened = 0;
    error = FSpOpenDF(file, fsWrPerm, &opened);
    if (error != noErr) return;
    fileRefNum = opened;
    stream = FastOpen(fileRefNum, 1);
    if (!stream) error = memFullErr;
}

void GIF89Writer::OutputHeaderInfo(const Point* size) {
    Put("GIF89a", 6);   // Signature and Version
    PutWordLE(size->h); // Logical Screen Width
    PutWordLE(size->v); // Logical Screen Height
    // Global Color Table Flag 1, Color Resolution bits - 1, Sort Flag 0, Size of Global Color
    // Table bits - 1. For a single colour, which callers are not to pass, the sum gives 0x6F.
    PutByte((colorBits - 1) * 16 + colorBits + 127);
    // Deliberate: the last index of a full table, whatever the size of this one. Readers ignore it,
    // because the image covers the whole screen.
    PutByte(255); // Background Color Index
    PutByte(0);   // Pixel Aspect Ratio: not given
}

void GIF89Writer::OutputCLUT(const RGBLookUpTable* table) {
    assert(numColors <= 256);
    const int entries = 1 << CeilLog2(numColors);
    for (int i = 0; i < entries; ++i) {
        const RGBtuple color = i < numColors ? TableEntry(*table, i) : RGBtuple{};
        PutByte(color.red);   // Red
        PutByte(color.green); // Green
        PutByte(color.blue);  // Blue
    }
}

void GIF89Writer::OutputCommentBlock(const char* comment) {
    PutByte(kExtensionIntroducer); // Extension Introducer
    PutByte(kCommentLabel);        // Comment Label
    for (std::size_t left = std::strlen(comment); left > 0;) {
        const std::size_t count = std::min<std::size_t>(left, kBlockBytes);
        PutBlock(comment, static_cast<int>(count)); // Comment Data
        comment += count;
        left -= count;
    }
    PutByte(kBlockTerminator); // Block Terminator
}

void GIF89Writer::OutputGraphicsExtension(Boolean transparent, short transIndex) {
    PutByte(kExtensionIntroducer); // Extension Introducer
    PutByte(kGraphicControlLabel); // Graphic Control Label
    PutByte(4);                    // Block Size
    PutByte(transparent ? 1 : 0);  // Disposal Method 0, User Input Flag 0, Transparent Color Flag
    PutWordLE(0);                  // Delay Time
    PutByte(transIndex);           // Transparent Color Index
    PutByte(kBlockTerminator);     // Block Terminator
}

void GIF89Writer::OutputImageDesc(const Point* size, Boolean interlace) {
    PutByte(kImageSeparator);      // Image Separator
    PutWordLE(0);                  // Image Left Position
    PutWordLE(0);                  // Image Top Position
    PutWordLE(size->h);            // Image Width
    PutWordLE(size->v);            // Image Height
    PutByte(interlace ? 0x40 : 0); // Local Color Table Flag 0, Interlace Flag, the rest 0
}

void GIF89Writer::OutputData(const unsigned char* pixels, const Point* size, std::int32_t rowBytes,
                             Boolean interlace) {
    if (error != noErr) return;
    error = InitializeLZWCompressor(&lzw);
    if (error != noErr) return;

    colorBits = std::max(colorBits, 2); // a two-colour image is still coded with two bits
    PutByte(colorBits);                 // LZW Minimum Code Size
    LZWCompressStart(&lzw, static_cast<short>(colorBits), 1, 0, PutCodeword,
                     reinterpret_cast<std::intptr_t>(this));
    const auto compressPass = [&](Pass pass) {
        for (int row = pass.firstRow; row < size->v; row += pass.step)
            CompressRow(pixels + std::ptrdiff_t{rowBytes} * row, size->h);
    };
    if (interlace)
        std::for_each(std::begin(kInterlaced), std::end(kInterlaced), compressPass);
    else
        std::for_each(std::begin(kProgressive), std::end(kProgressive), compressPass);
    const short status = LZWCompressEnd(&lzw);
    if (error == noErr) error = status;
    FinalizeLZWCompressor(&lzw);

    if (bitCount > 0) PutBlock(codeBuffer, (bitCount + 7) >> 3); // Data Sub-block
    PutByte(kBlockTerminator);                                   // Block Terminator
    PutByte(kTrailer);                                           // GIF Trailer
}

short GIF89Writer::Done() {
    // Deliberate: the result of closing is ignored. The file layer keeps an error that shows only
    // now, and TakeCloseError tells it.
    if (stream) FastClose(stream);
    if (fileRefNum != 0) FSClose(fileRefNum);
    stream = nullptr;
    fileRefNum = 0;
    return error;
}

void GIF89Writer::Put(const void* bytes, int count) {
    if (error == noErr) error = FastWrite(stream, count, bytes);
}

void GIF89Writer::PutByte(int value) {
    const auto byte = static_cast<unsigned char>(value);
    Put(&byte, 1);
}

void GIF89Writer::PutWordLE(int value) {
    PutByte(value);
    PutByte(value >> 8);
}

void GIF89Writer::PutBlock(const void* bytes, int count) {
    PutByte(count); // Block Size
    Put(bytes, count);
}

// The same as LZWCompress with PutCodeword, for a batch of codes at a time.
void GIF89Writer::CompressRow(const unsigned char* pixels, std::int32_t columns) {
    LZWCodes batch;
    while (columns > 0) {
        const std::int32_t done = LZWCompressSome(&lzw, columns, pixels, &batch);
        PackCodes(batch.codes, batch.count, batch.width);
        pixels += done;
        columns -= done;
    }
}

// Joins four codes of at most 12 bits to one number, so that the buffer is written once for all
// four.
void GIF89Writer::PackCodes(const std::uint16_t* codes, int count, int width) {
    const auto code = [&codes, width](int i) { return std::uint64_t{codes[i]} << i * width; };
    for (; count >= 4; count -= 4, codes += 4)
        PackBits(code(0) | code(1) | code(2) | code(3), 4 * width);
    for (; count > 0; --count) PackBits(*codes++, width);
}

// Appends up to 56 bits, the least significant first. Higher bits of `bits` must be 0. Always
// writes eight bytes, so that the buffer behind the new bits is zero, as the next call needs it.
void GIF89Writer::PackBits(std::uint64_t bits, int count) {
    unsigned char* const byte = codeBuffer + (bitCount >> 3);
    bits = bits << (bitCount & 7) | *byte;
    if constexpr (std::endian::native == std::endian::little)
        std::memcpy(byte, &bits, sizeof bits);
    else
        for (int i = 0; i < 8; ++i) byte[i] = static_cast<unsigned char>(bits >> 8 * i);

    bitCount += count;
    if (bitCount >= kBlockBits) {
        PutBlock(codeBuffer, kBlockBytes); // Data Sub-block
        bitCount -= kBlockBits;
        std::memmove(codeBuffer, codeBuffer + kBlockBytes, sizeof codeBuffer - kBlockBytes);
    }
}

short PutCodeword(std::intptr_t refcon, short code, short width) {
    GIF89Writer& writer = *reinterpret_cast<GIF89Writer*>(refcon);
    writer.PackBits(static_cast<std::uint16_t>(code), width);
    return writer.error;
}

std::int32_t CeilLog2(std::int64_t n) {
    if (n < 2) return 0;
    for (int k = 1; k < 32; ++k)
        if (std::int64_t{1} << k >= n) return k;
    return -1;
}

short InitializeLZWCompressor(LZWData* lzw) {
    lzw->hashTable = NewHandle(kLZWHashBytes);
    if (!lzw->hashTable) return memFullErr;
    lzw->stringTable = NewHandle(kLZWStringBytes);
    if (lzw->stringTable) return noErr;
    DisposeHandle(lzw->hashTable);
    lzw->hashTable = nullptr;
    return memFullErr;
}

void FinalizeLZWCompressor(LZWData* lzw) {
    DisposeHandle(lzw->hashTable); // null does nothing
    DisposeHandle(lzw->stringTable);
    lzw->hashTable = nullptr;
    lzw->stringTable = nullptr;
}
