// The sweeps that fill the inverse map, and the diffusion itself.
#include "DiffuseColor.h"

#include "Composite.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

constexpr int kCells = 32; // along each channel
constexpr int kMapBytes = kCells * kCells * kCells;
constexpr short kRedStride = 1024, kGreenStride = 32, kBlueStride = 1;
constexpr std::uint8_t kUnreached = 255; // above every real distance, 3 x 31 at most

static_assert((-1 >> 1) == -1, "errors are split by arithmetic shifts");

int CellOf(int red, int green, int blue) {
    return (red >> 3) * kRedStride + (green >> 3) * kGreenStride + (blue >> 3) * kBlueStride;
}

// Downward, so that the lowest of several entries in a cell stays.
void SeedCells(const RGBLookUpTable& table, std::uint8_t* inverse, std::uint8_t* distance,
               int numColors) {
    for (int i = 255; i >= 0; --i) {
        const int cell = CellOf(table.red[i], table.green[i], table.blue[i]);
        inverse[cell] = static_cast<std::uint8_t>(std::min(i, numColors - 1));
        distance[cell] = 0;
    }
}

// The transparent colour and its index; the transparent index is not looked at in pictures
// without opacity.
struct Transparency {
    RGBtuple below = {};
    std::uint8_t index = 0;
};

// One row of pixels and its errors; pixels follow each other in the direction of `step`.
struct ScanRow {
    const std::uint8_t* src;
    std::uint8_t* dst;
    std::int16_t* current; // errors of this row, 3 values a pixel
    std::int16_t* next;    // errors of the row below
    int columns;
    int step; // 1 from left to right, -1 from right to left
};

template <int kPixelBytes>
void DiffuseRow(const ScanRow& row, const RGBLookUpTable& table, const std::uint8_t* inverse,
                const Transparency& transparency) {
    const int ahead = 3 * row.step;
    int x = row.step > 0 ? 0 : row.columns - 1;
    for (int left = row.columns; left > 0; --left, x += row.step) {
        const std::uint8_t* pixel = row.src + std::ptrdiff_t{x} * kPixelBytes;
        RGBtuple color = {0, pixel[0], pixel[1], pixel[2]};
        if constexpr (kPixelBytes == 4) {
            if (pixel[3] == 0) {
                row.dst[x] = transparency.index;
                continue;
            }
            color = CompositePixel(pixel, transparency.below);
        }
        std::int16_t* current = row.current + 3 * x;
        std::int16_t* below = row.next + 3 * x;
        const short red = DiffuseIn(color.red, current[0]);
        const short green = DiffuseIn(color.green, current[1]);
        const short blue = DiffuseIn(color.blue, current[2]);
        const std::uint8_t index = inverse[CellOf(red, green, blue)];
        row.dst[x] = index;
        const int errors[] = {red - table.red[index], green - table.green[index],
                              blue - table.blue[index]};
        for (int c = 0; c < 3; ++c)
            DiffuseOut(static_cast<std::int16_t>(errors[c]), below + c - ahead, below + c,
                       current + c + ahead);
    }
}

// The bands of a picture, with (4 bytes a pixel) and without opacity.
template <int kPixelBytes>
void DiffuseRows(const std::uint8_t* src, std::uint8_t* dst, int rows, int columns, int firstRow,
                 std::ptrdiff_t srcRowBytes, std::ptrdiff_t dstRowBytes,
                 const RGBLookUpTable& table, const std::uint8_t* inverse, std::int16_t* errors,
                 const Transparency& transparency) {
    // One spare pixel on either side of an error row takes what is pushed past the edge.
    const std::ptrdiff_t errorRow = (std::ptrdiff_t{columns} + 2) * 3;
    for (int i = 0; i < rows; ++i) {
        // Buffers and direction follow the picture's row, so that errors flow from band to band.
        const int y = firstRow + i;
        std::int16_t* current = errors + (y & 1 ? errorRow : 0);
        std::int16_t* next = errors + (y & 1 ? 0 : errorRow);
        std::memset(next, 0, static_cast<std::size_t>(errorRow) * sizeof(std::int16_t));
        // Deliberate: the direction changes every second row, not every row.
        const int step = y & 2 ? -1 : 1;
        DiffuseRow<kPixelBytes>(
            {src + i * srcRowBytes, dst + i * dstRowBytes, current + 3, next + 3, columns, step},
            table, inverse, transparency);
    }
}

} // namespace

void BuildInverse(const RGBLookUpTable* table, std::uint8_t* inverse, std::uint8_t* distance,
                  short numColors) {
    std::memset(distance, kUnreached, kMapBytes);
    SeedCells(*table, inverse, distance, numColors);
    // The order of the axes decides ties.
    constexpr short kAxes[][3] = {{kBlueStride, kRedStride, kGreenStride},
                                  {kBlueStride, kGreenStride, kRedStride},
                                  {kGreenStride, kRedStride, kBlueStride}};
    for (const auto& [outer, inner, along] : kAxes)
        for (int i = 0; i < kCells; ++i)
            for (int j = 0; j < kCells; ++j) {
                const int start = i * outer + j * inner;
                SpreadLine(inverse + start, distance + start, along);
            }
}

void SpreadLine(std::uint8_t* inverse, std::uint8_t* distance, short stride) {
    SpreadAcross(inverse, distance, stride);
    const int last = (kCells - 1) * stride;
    SpreadAcross(inverse + last, distance + last, static_cast<short>(-stride));
}

std::uint8_t SpreadAcross(std::uint8_t* inverse, std::uint8_t* distance, short stride) {
    std::uint8_t carriedIndex = 0;
    std::uint8_t carriedDistance = kUnreached;
    for (int i = 0, cell = 0; i < kCells; ++i, cell += stride) {
        if (carriedDistance != kUnreached) ++carriedDistance;
        if (carriedDistance < distance[cell]) {
            inverse[cell] = carriedIndex;
            distance[cell] = carriedDistance;
        } else {
            carriedIndex = inverse[cell];
            carriedDistance = distance[cell];
        }
    }
    return carriedIndex;
}

void DiffuseColorNoTransparency(const std::uint8_t* src, std::uint8_t* dst, short rows,
                                short columns, short firstRow, std::int32_t srcRowBytes,
                                std::int32_t dstRowBytes, const RGBLookUpTable* table,
                                const std::uint8_t* inverse, std::int16_t* errors) {
    DiffuseRows<3>(src, dst, rows, columns, firstRow, srcRowBytes, dstRowBytes, *table, inverse,
                   errors, {});
}

void DiffuseColorWithTransparency(const std::uint8_t* src, std::uint8_t* dst, short rows,
                                  short columns, short firstRow, std::int32_t srcRowBytes,
                                  std::int32_t dstRowBytes, const RGBLookUpTable* table,
                                  const std::uint8_t* inverse, std::int16_t* errors,
                                  PackedColor transColor, std::int32_t transIndex) {
    DiffuseRows<4>(src, dst, rows, columns, firstRow, srcRowBytes, dstRowBytes, *table, inverse,
                   errors, {UnpackColor(transColor), static_cast<std::uint8_t>(transIndex)});
}

short DiffuseIn(std::uint8_t value, std::int16_t error) {
    // Deliberate: a quarter of the error is dropped, which damps the pattern in flat areas. The
    // shift rounds toward minus infinity.
    return static_cast<short>(std::clamp(value + error - (error >> 2), 0, 255));
}

void DiffuseOut(std::int16_t error, std::int16_t* behindBelow, std::int16_t* below,
                std::int16_t* ahead) {
    // Deliberate: shifts instead of divisions, so -1 puts -1 below and behind and nothing
    // elsewhere; an odd rest is dropped.
    const int quarter = error >> 2;
    const int half = (error - quarter) >> 1;
    const auto add = [](std::int16_t* cell, int part) {
        *cell = static_cast<std::int16_t>(*cell + part);
    };
    add(behindBelow, quarter);
    add(below, half);
    add(ahead, half);
}
