// Error diffusion with one row of errors for every row of the picture.
#pragma once

#include "ColorTable.h"

#include <array>
#include <map>
#include <vector>

/// One pass over a picture; rows may be handed over in bands, and bands may leave rows out.
class PlainDiffusion {
  public:
    using ErrorRow = std::vector<std::array<std::int16_t, 3>>; ///< cell x of a row is at x + 1

    /// 3 or 4 planes; the map has 32768 indices.
    PlainDiffusion(const RGBLookUpTable& palette, std::vector<std::uint8_t> inverseMap,
                   int pictureColumns, int planeCount, PackedColor transparentColor = 0,
                   std::uint8_t transparentIndex = 0);

    /// Indices of `rows` rows from `firstRow` of the picture on; pixels without padding.
    std::vector<std::uint8_t> Rows(const std::uint8_t* pixels, int firstRow, int rows);

    /// Errors by row of the picture, as far as rows were touched; may be set before the start.
    std::map<int, ErrorRow> errors;

  private:
    void OneRow(const std::uint8_t* pixels, int y, std::vector<std::uint8_t>& indices);
    ErrorRow& ErrorsInto(int y);

    RGBLookUpTable table;
    std::vector<std::uint8_t> inverse;
    int columns, planes;
    PackedColor below;
    std::uint8_t transIndex;
};
