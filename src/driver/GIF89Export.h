// One export from prepare to finish: the context that lives between the host's calls.
#pragma once

#include "ColorTable.h"
#include "ExportRecord.h"

#include <cstdint>

class GIF89IndexedExport;
class GIF89RGBExport;

/// The options dialogs of the two kinds of export. They are handed in as functions, so that this
/// folder does not depend on the dialogs. Each asks the user, sets the context's option members,
/// and answers 0 or the code that ends the export.
struct OptionsDialogs {
    /// Also decides which palette is built: with `*exact` that of the picture's own colours, with
    /// `*supplied` the one that is in `palette` already, with neither an adaptive one.
    short (*rgb)(GIF89RGBExport& context, unsigned char* exact, unsigned char* supplied);
    short (*indexed)(GIF89IndexedExport& context);
};

/// What the record says about the picture when prepare or start is called. The host may change the
/// record whenever one of its procedures is called, so the export uses this copy, for which its
/// buffers were made.
struct PictureShape {
    std::int16_t rows = 0, columns = 0;
    std::int16_t planes = 0; ///< of the document, transparency and further channels included
    bool hasTransparency = false;

    /// Top and left 0, bottom and right the sides.
    Rect Bounds() const { return {0, 0, rows, columns}; }
};

/// State of one export. Owns every buffer, the comment and the palette; finish frees them.
///
/// The context lies in a block of the Memory Manager, which is released at the end without calling
/// a destructor. So its members must be plain values.
class GIF89ExportContext {
  public:
    /// Runs one selector; true when the export is over.
    Boolean Dispatch(short selector, ExportRecord* record, short* result);

    /// Takes `shape` from the record. Must be called before any of the steps below.
    void TakeShape();

    /// Bytes the export will allocate; *gifBufferSize becomes the size that the base
    /// AllocateBuffers gives `gifBuffer`.
    virtual std::int32_t SizeBuffers(std::int32_t& gifBufferSize) = 0;
    /// 0, memFullErr, or the host's error. After an error, finish frees what was allocated.
    virtual short AllocateBuffers();
    virtual void DeallocateBuffers();
    /// Gathers the options and the output file; sets `error`.
    virtual void GetParameters() = 0;
    /// Fills `gifBuffer` with one palette index a pixel; sets `error`.
    virtual void MakeGIFBuffer() = 0;

    const OptionsDialogs* dialogs = nullptr;
    ExportRecord* exportRecord = nullptr; ///< set anew on every call: the host may move the record
    PictureShape shape;
    std::int16_t error = noErr; ///< every step stops once this is not 0
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
    bool isAtWork = false;      ///< inside Dispatch

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
