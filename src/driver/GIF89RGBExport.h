// The RGB variant of an export.
#pragma once

#include "ExactPalette.h"
#include "GIF89Export.h"

/// Exports an RGB picture, with or without a transparency plane.
class GIF89RGBExport final : public GIF89ExportContext {
  public:
    std::int32_t SizeBuffers(std::int32_t& gifBufferSize) override;
    short AllocateBuffers() override;
    void DeallocateBuffers() override;
    void GetParameters() override;
    void MakeGIFBuffer() override;

    /// Builds `palette` and sets `numColors` and `transIndex`. Returns `error` unchanged.
    short SetupPalette(unsigned char exact, unsigned char supplied);

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
