// Writes a GIF89a file of one image: header, colour table, optional comment and transparent index,
// LZW data. Field names are those of CompuServe's "Graphics Interchange Format, Version 89a".
#pragma once

#include "ColorTable.h"
#include "FastStream.h"
#include "LZW.h"

/// Writes one image into a file that exists already and is empty.
///
/// @param size       columns in h, rows in v, 0..32767 each
/// @param pixels     size->v rows of size->h palette indices, each below numColors
/// @param rowBytes   bytes from one row to the next; may be negative
/// @param interlace  nonzero stores the rows in four passes
/// @param transIndex the palette index that readers leave transparent, or -1 for none
/// @param numColors  palette entries in use, 2..256
/// @param comment    zero-terminated, any bytes; null writes no comment block
/// @return 0, or the first error of FSpOpenDF or FastWrite, or memFullErr; the file then holds
///         what was written before it. An error that shows only on closing is not returned; ask
///         TakeCloseError for it.
short WriteGIF89(const FSSpec* file, const Point* size, const unsigned char* pixels,
                 std::int32_t rowBytes, Boolean interlace, short transIndex,
                 const RGBLookUpTable* table, short numColors, const char* comment);

/// One file being written. The operations are called once each, in the order of declaration; the
/// first error is kept in `error`, and everything after it is skipped.
class GIF89Writer {
  public:
    /// Opens the file and a buffered stream on it. The file is closed by Done, not by the
    /// destructor.
    GIF89Writer(const FSSpec* file, std::int32_t colors);

    /// "Header" and "Logical Screen Descriptor".
    void OutputHeaderInfo(const Point* size);

    /// "Global Color Table": the used entries, then black up to the next power of two.
    void OutputCLUT(const RGBLookUpTable* table);

    /// "Comment Extension"; an empty text still makes a block.
    void OutputCommentBlock(const char* comment);

    /// "Graphic Control Extension" with nothing but the transparent index in it.
    void OutputGraphicsExtension(Boolean transparent, short transIndex);

    /// "Image Descriptor".
    void OutputImageDesc(const Point* size, Boolean interlace);

    /// "Table Based Image Data" and "Trailer". Without memory for the coder's tables `error`
    /// becomes memFullErr and nothing is written.
    void OutputData(const unsigned char* pixels, const Point* size, std::int32_t rowBytes,
                    Boolean interlace);

    /// Closes what is open and returns `error`.
    short Done();

  private:
    friend short PutCodeword(std::intptr_t refcon, short code, short width);

    void Put(const void* bytes, int count);
    void PutByte(int value);
    void PutWordLE(int value);
    void PutBlock(const void* bytes, int count);
    void CompressRow(const unsigned char* pixels, std::int32_t columns);
    void PackCodes(const std::uint16_t* codes, int count, int width);
    void PackBits(std::uint64_t bits, int count);

    unsigned char codeBuffer[264] = {}; ///< a data sub-block of 255 bytes and what runs over it
    std::int32_t bitCount = 0;          ///< bits packed into codeBuffer
    short error = noErr;
    short fileRefNum = 0; ///< 0 while no file is open
    FastStream* stream = nullptr;
    LZWData lzw;
    std::int32_t numColors;
    std::int32_t colorBits;
};

/// The coder's put-code callback: packs codes, least significant bit first, and writes every
/// sub-block that is full. `refcon` is the GIF89Writer; returns its `error`.
short PutCodeword(std::intptr_t refcon, short code, short width);

/// 0 for n below 2, else the smallest k with 1 << k at least n; -1 when that is above 31.
std::int32_t CeilLog2(std::int64_t n);

/// Makes both tables of the coder. 0, or memFullErr with neither. FinalizeLZWCompressor frees them.
short InitializeLZWCompressor(LZWData* lzw);

/// Frees the tables that are there.
void FinalizeLZWCompressor(LZWData* lzw);
