// One export from prepare to finish: the context that lives between the host's calls.
#pragma once

#include "ColorTable.h"
#include "ExportRecord.h"

#include <cstdint>

class GIF89IndexedExport;
class GIF89RGBExport;

/// The options dialogs of the two kinds of export, which know the contexts and are not known to
/// them. Each asks the user, sets the context's option members, and answers 0 or the code that ends
/// the export.
struct OptionsDialogs {
    /// Also says which palette to build: `*exact` the picture's own colours, `*supplied` the one
    /// already in `palette`, neither an adaptive one.
    short (*rgb)(GIF89RGBExport& context, unsigned char* exact, unsigned char* supplied);
    short (*indexed)(GIF89IndexedExport& context);
};

/// What the record says of the picture at the call of prepare or start. The host may change its
/// record whenever it is called; buffers are made for this shape, so only this is used.
struct PictureShape {
    std::int16_t rows = 0, columns = 0;
    std::int16_t planes = 0; ///< of the document, transparency and further channels included
    bool hasTransparency = false;

    /// Top and left 0, bottom and right the sides.
    Rect Bounds() const { return {0, 0, rows, columns}; }
};

/// State of one export. Owns every buffer, the comment and the palette; finish frees them.
///
/// The context lies in a block of the Memory Manager and its memory is simply released at the end,
/// so members are plain values whose destructors have nothing to do.
class GIF89ExportContext {
  public:
    /// Runs one selector; true when the export is over.
    Boolean Dispatch(short selector, ExportRecord* record, short* result);

    /// Takes `shape` from the record; before any of the steps below.
    void TakeShape();

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
