// Error diffusion pixel after pixel, row after row, in plain integer code.
#pragma once

#include "ColorTable.h"

#include <vector>

/// One pass over a picture; rows may be handed over in bands, and bands may leave rows out.
class PlainDiffusion {
  public:
    /// 3 or 4 planes; the map has 32768 indices.
    PlainDiffusion(const RGBLookUpTable& palette, std::vector<std::uint8_t> inverseMap,
                   int pictureColumns, int planeCount, PackedColor transparentColor = 0,
                   std::uint8_t transparentIndex = 0);

    /// Indices of `rows` rows from `firstRow` of the picture on; neither side has padding.
    void Rows(const std::uint8_t* pixels, int firstRow, int rows, std::uint8_t* indices);
    std::vector<std::uint8_t> Rows(const std::uint8_t* pixels, int firstRow, int rows);

    /// Errors into the even and then the odd rows; columns + 2 pixels of 3 values each, pixel x of
    /// a row at x + 1. May be set before the start.
    std::vector<std::int16_t> errors;

  private:
    template <int kPlanes> void OneRow(const std::uint8_t* pixel, int y, std::uint8_t* indices);

    RGBLookUpTable table;
    std::vector<std::uint8_t> inverse;
    int columns, planes;
    RGBtuple below;
    std::uint8_t transIndex;
};
