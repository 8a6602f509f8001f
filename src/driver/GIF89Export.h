// One export from prepare to finish: the context that lives between the host's calls, and its RGB
// and indexed variants.
#pragma once

#include "ColorTable.h"
#include "ExactPalette.h"
#include "ExportRecord.h"

#include <cstdint>

/// Serves one call of the host: makes the context when `*data` is 0, runs the selector, and
/// destroys the context and clears `*data` when the export is over. Codes go to `*result`; an
/// unknown selector ends the export and leaves the result word alone.
void RunSelector(short selector, ExportRecord* record, std::intptr_t* data, short* result);

/// State of one export. Owns every buffer, the comment and the palette; finish frees them.
///
/// The context lies in a block of the Memory Manager and its memory is simply released at the end,
/// so members are plain values whose destructors have nothing to do.
class GIF89ExportContext {
  public:
    /// Runs one selector; true when the export is over.
    Boolean Dispatch(short selector, ExportRecord* record, short* result);

    /// Bytes the export will allocate; *gifBufferSize becomes the size that the base
    /// AllocateBuffers gives `gifBuffer`.
    virtual std::int32_t SizeBuffers(std::int32_t& gifBufferSize) = 0;
    /// 0, memFullErr, or the host's error. What was had stays recorded and is freed at finish.
    virtual short AllocateBuffers();
    virtual void DeallocateBuffers();
    /// Gathers the options and the output file; sets `error`.
    virtual void GetParameters() = 0;
    /// Fills `gifBuffer` with one palette index a pixel; sets `error`.
    virtual void MakeGIFBuffer() = 0;

    ExportRecord* exportRecord = nullptr; ///< set anew on every call: the host may move the record
    std::int16_t error = noErr;           ///< every step stops once this is not 0
    FSSpec outputFile;
    std::int32_t bufferSize = 0;  ///< bytes of `gifBuffer`
    std::int32_t gifRowBytes = 0; ///< from one row of `gifBuffer` to the next
    std::uint8_t* gifBuffer = nullptr;
    std::int16_t transIndex = -1; ///< index written as transparent, -1 for none
    std::uint8_t interlaced = 0;
    char* comment = nullptr; ///< ends with a zero byte
    std::uint8_t commentEnabled = 0;
    RGBLookUpTable palette = {};
    std::int32_t numColors = 0; ///< entries of `palette` in use

  protected:
    ~GIF89ExportContext() = default; // never destroyed through a pointer to the base

    /// Asks where to save and creates the file; sets `error` and `outputFile`.
    void GetOutputFile();

  private:
    void DoPrepare();
    void DoStart();
    void DoContinue();
    void DoFinish();
    void FetchComment();
};

/// Exports an RGB picture, with or without a transparency plane.
class GIF89RGBExport final : public GIF89ExportContext {
  public:
    std::int32_t SizeBuffers(std::int32_t& gifBufferSize) override;
    short AllocateBuffers() override;
    void DeallocateBuffers() override;
    void GetParameters() override;
    void MakeGIFBuffer() override;

    /// Asks for the options; sets the option members, `numColors`, and which palette to build:
    /// `*exact` the picture's own colours, `*supplied` the one already in `palette`, neither an
    /// adaptive one. 0, or the code that ends the export.
    short GetRGB24Parameters(unsigned char* exact, unsigned char* supplied);

    /// Builds `palette` and sets `numColors` and `transIndex`. Returns `error` unchanged.
    short SetupPalette(unsigned char exact, unsigned char supplied);

    /// Builds palette and `gifBuffer` as an export with these flags would and shows both in a
    /// dialog. What it leaves in `palette`, `numColors` and `transIndex` is the caller's to
    /// restore. 0, -1 when the dialog cannot be had, or memFullErr.
    short DoPreview(unsigned char exact, unsigned char supplied);

    std::uint8_t* errorBuffer = nullptr; ///< two rows of columns + 2 cells of three 16-bit values
    std::uint8_t* inverseMap = nullptr;  ///< 32768 bytes
    std::uint8_t* inverseWork = nullptr; ///< 32768 bytes
    RGBtuple transparentColor;           ///< what transparent pixels are blended with
    ExactInfo exactInfo = {};            ///< count -1: too many colours for an exact palette
    std::int32_t suppliedPaletteCount = 0;
    /// A word whose first byte in memory allows a supplied palette to be resized.
    std::int32_t suppliedPaletteFlag = 0;

    // What the options dialog remembers while it is open
    RGBColor chosenColor;            ///< of transparent pixels, 257 times the 8-bit level
    FSSpec paletteFile;              ///< the palette file picked last
    std::int16_t paletteChoice = 0;  ///< the palette pop-up's entry in force
    Boolean hasPaletteFileEntry = 0; ///< entries for the file are in that pop-up
    Boolean hasTypedCountEntry = 0;  ///< an entry for a typed count is in the pop-up of counts

  private:
    std::int32_t ErrorBufferBytes() const;
};

/// Exports an indexed picture with its own indices and palette.
class GIF89IndexedExport final : public GIF89ExportContext {
  public:
    std::int32_t SizeBuffers(std::int32_t& gifBufferSize) override;
    short AllocateBuffers() override;
    void DeallocateBuffers() override;
    void GetParameters() override;
    void MakeGIFBuffer() override;

    /// Asks for the options; sets the option members and `transIndex` and rewrites `gifBuffer` and
    /// `palette` as they demand. 0, or the code that ends the export.
    short GetIndexedParameters();

    /// Makes `alphaData` a copy of the indices in which the pixels that plane `plane` hides carry
    /// one index, which *transIndexOut becomes. A plane hides where it is below 128, inverted
    /// where it is not. Asking for the plane of the last call again flips its sense without asking
    /// the host; *transIndexOut must then hold the index of that call.
    /// 0, the host's error, or memFullErr when that plane's data are gone.
    short GetMaskFromAlphaChannel(short plane, unsigned char invert, int* transIndexOut);

    std::uint8_t* alphaData =
        nullptr;                    ///< in the host's memory; masked indices after the call above
    std::int32_t alphaRowBytes = 0; ///< from one row of `alphaData` to the next
    std::int16_t alphaPlane = -1;   ///< the plane behind `alphaData`, -1 for none

  private:
    short RequestWholeImage();
    int HighestIndex() const;

    bool ownsGifBuffer = false; ///< with one plane `gifBuffer` is the host's memory
};

/// The largest byte of an area; 0 when it has no rows or columns.
int FindMaxValue(const std::uint8_t* data, std::int32_t rows, std::int32_t columns,
                 std::int32_t rowBytes);

/// Turns a mask into the masked indices: visible pixels keep their index, hidden ones get the
/// lowest index that no visible pixel carries. When all 256 are in use, the rarest from 2 up is
/// given up and its visible pixels get the nearest other entry of the table.
///
/// @param indexData the indices; left as they are
/// @param alphaData in: the mask; out: the masked indices
/// @param table     256 colours; changed and restored
/// @param invert    nonzero: bytes below 128 are visible, instead of the others
/// @return the index of hidden pixels
int MaskDataWithAlpha(const std::uint8_t* indexData, std::int32_t indexRowBytes,
                      std::uint8_t* alphaData, std::int32_t alphaRowBytes, RGBLookUpTable* table,
                      std::int32_t rows, std::int32_t columns, unsigned char invert);

/// Index of the nearest of all 256 entries by squared distance; an equal entry wins at once, ties
/// go to the lowest index.
int FindMatchingIndex(const RGBLookUpTable* table, RGBtuple color);

/// The count without the black entries at the top of the table; entries up to and including index
/// `floor` always stay.
int TrimTopBlacks(const RGBLookUpTable* table, int count, int floor);

/// Fills `table` with `colors` colours by median cut over the whole picture. `histogram` is 131072
/// bytes of working memory.
void AdaptiveTable(RGBLookUpTable* table, short colors, std::uint8_t* histogram,
                   ExportRecord* record, RGBtuple transparentColor);
