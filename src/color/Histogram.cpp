#include "Histogram.h"

#include "Composite.h"
#include "PixelVector.h"

#include <cstddef>

namespace {

// Calls `countRow` with every row of a band and its columns.
template <class CountRow>
void ForEachRow(const Rect& area, std::int32_t rowBytes, const std::uint8_t* data,
                CountRow countRow) {
    const int rows = area.bottom - area.top;
    for (int y = 0; y < rows; ++y)
        countRow(data + std::ptrdiff_t{y} * rowBytes, area.right - area.left);
}

// The cells of four pixels are computed at once. Where all four are the same, as in flat areas, 4
// is added once, because four increments of one count would have to wait for each other. The loop
// at the end does the same for single pixels.
void CountRGBRow(const std::uint8_t* pixel, int columns, std::uint32_t* histogram) {
    for (; columns * 3 >= kFourCellsBytes; columns -= 4, pixel += 12) {
        const auto [firstTwo, lastTwo] = FindFourCells(pixel);
        const auto first = static_cast<std::uint32_t>(firstTwo);
        if (firstTwo == lastTwo && first == firstTwo >> 32) {
            histogram[first] += 4;
            continue;
        }
        ++histogram[first];
        ++histogram[firstTwo >> 32];
        ++histogram[static_cast<std::uint32_t>(lastTwo)];
        ++histogram[lastTwo >> 32];
    }
    for (; columns > 0; --columns, pixel += 3)
        ++histogram[CellOf(PackRGB(pixel[2], pixel[1], pixel[0]))];
}

// Every pixel is blended, whatever its opacity: an opaque one comes out unchanged, and a fully
// transparent one adds 0 to some cell. This is faster than a branch for each kind of pixel.
void CountRGBARow(const std::uint8_t* pixel, int columns, PixelVector below,
                  std::uint32_t* histogram) {
    for (; columns > 0; --columns, pixel += 4) {
        const std::uint32_t bytes = LoadFourBytes(pixel);
        const PixelVector color = CompositePixel(PixelVector::Widen(bytes), below);
        histogram[color.Clamp().Cell()] += pixel[3] != 0;
    }
}

} // namespace

short CalcHistogram3DNoTransparency(const Rect* area, std::int32_t rowBytes,
                                    const std::uint8_t* data, std::uint32_t histogram[32][32][32]) {
    ForEachRow(*area, rowBytes, data, [=](const std::uint8_t* pixels, int columns) {
        CountRGBRow(pixels, columns, histogram[0][0]);
    });
    return 0;
}

short CalcHistogram3DWithTransparency(const Rect* area, std::int32_t rowBytes,
                                      const std::uint8_t* data, HistInfo* info) {
    std::uint32_t* const histogram = (*info->histogram)[0][0];
    const RGBtuple color = UnpackColor(info->transColor);
    const PixelVector below = PixelVector::Widen(PackRGB(color.blue, color.green, color.red));
    ForEachRow(*area, rowBytes, data, [=](const std::uint8_t* pixels, int columns) {
        CountRGBARow(pixels, columns, below, histogram);
    });
    return 0;
}
