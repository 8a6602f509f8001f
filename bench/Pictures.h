// The seeded pictures that every benchmark works on, with what earlier stages make of them.
#pragma once

#include "AdaptivePalette.h"
#include "ColorTable.h"
#include "Histogram.h"
#include "RandomPictures.h"

#include <cstdint>
#include <string>
#include <vector>

constexpr int kBenchRows = 1080;
constexpr int kBenchColumns = 1920;
constexpr Rect kBenchArea = {0, 0, kBenchRows, kBenchColumns};

/// One picture, each stage of an export with 256 colours (255 and the transparent one with
/// opacity) done by the module's own routines.
struct BenchPicture {
    std::string name;
    PictureKind kind = PictureKind::photo;
    std::vector<std::uint8_t> rgb, rgba;
    std::vector<std::uint32_t> histogram; ///< of rgb, 32768 cells
    RGBLookUpTable palette = {};          ///< adaptive, of rgb
    std::vector<std::uint8_t> inverse;    ///< of palette
    std::vector<std::uint8_t> indices;    ///< rgb diffused to palette
};

/// The cells in the shape that the routines take.
inline Histogram& CellsOf(std::vector<std::uint32_t>& cells) {
    return *reinterpret_cast<Histogram*>(cells.data());
}

/// All of them, made at the first call.
const std::vector<BenchPicture>& BenchPictures();
