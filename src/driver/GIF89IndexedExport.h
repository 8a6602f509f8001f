// The indexed variant of an export.
#pragma once

#include "GIF89Export.h"

struct DeliveredArea;

/// Exports an indexed picture with its own indices and palette.
class GIF89IndexedExport final : public GIF89ExportContext {
  public:
    std::int32_t SizeBuffers(std::int32_t& gifBufferSize) override;
    short AllocateBuffers() override;
    void DeallocateBuffers() override;
    void GetParameters() override;
    void MakeGIFBuffer() override;

    /// Makes `alphaData` a copy of the indices in which all pixels hidden by plane `plane` carry
    /// one index, and sets *transIndexOut to that index. A plane hides the pixels where it is below
    /// 128, an inverted one the others. When the plane is that of the last call, the host is not
    /// asked again and the present mask is turned around; *transIndexOut must then hold the index
    /// of that call. Returns 0, the host's error, or memFullErr when the plane's data are gone.
    short GetMaskFromAlphaChannel(short plane, unsigned char invert, int* transIndexOut);

    std::uint8_t* alphaData =
        nullptr;                    ///< in the host's memory; masked indices after the call above
    std::int32_t alphaRowBytes = 0; ///< from one row of `alphaData` to the next
    std::int16_t alphaPlane = -1;   ///< the plane behind `alphaData`, -1 for none

  private:
    short RequestPlane(DeliveredArea* delivered);
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
