// The diffusion, two rows at a time where both run in the same direction. The plain version, pixel
// after pixel in channels of their own, is PlainDiffusion among the tests.
#include "DiffuseColor.h"

#include "Composite.h"
#include "PixelVector.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

static_assert((-1 >> 1) == -1, "errors are split by arithmetic shifts");

// The palette, its inverse map and the transparent colour, in the form in which pixels use them.
struct Mapping {
    Mapping(const RGBLookUpTable& table, const std::uint8_t* inverseMap, PackedColor transColor,
            std::int32_t index)
        : inverse(inverseMap), below(Widen(UnpackColor(transColor))),
          transIndex(static_cast<std::uint8_t>(index)) {
        for (int i = 0; i < 256; ++i) {
            const PixelVector entry = Widen(TableEntry(table, i));
            entry.StoreFour(levels[i]);
            (entry + entry + entry).StoreFour(tripled[i]);
        }
    }

    static PixelVector Widen(RGBtuple color) {
        return PixelVector::Widen(PackRGB(color.blue, color.green, color.red));
    }

    alignas(8) std::int16_t levels[256][4]; // the palette, an entry's channels side by side
    alignas(8) std::int16_t tripled[256][4];
    const std::uint8_t* inverse;
    PixelVector below;       // the transparent colour; unused in pictures without opacity
    std::uint8_t transIndex; // unused in pictures without opacity
};

// The pixel's bytes as a number, red in the lowest. For a pixel of three bytes only those are read,
// because a fourth may lie past the end of the picture.
template <int kPixelBytes> std::uint32_t LoadPixel(const std::uint8_t* pixel) {
    if constexpr (kPixelBytes == 4) return LoadFourBytes(pixel);
    return static_cast<std::uint32_t>(pixel[0] | pixel[1] << 8 | pixel[2] << 16);
}

// Result of one step.
struct Step {
    PixelVector reached;  // the error accumulated at this pixel
    PixelVector finished; // the complete error of the pixel behind it in the next row
};

// The scan of one row; pixels are counted in the direction of the scan.
template <int kPixelBytes, int kStep> struct RowScan {
    const std::uint8_t* src; // the first pixel in the scan
    std::uint8_t* dst;
    // The part of the last pixel's error that the next pixel gets; the pixel below gets as much.
    PixelVector share = PixelVector::Splat(0);

    // Goes past a cell that has no pixel or a transparent one. Its error is dropped.
    Step Pass(PixelVector cell) {
        return {cell + share, std::exchange(share, PixelVector::Splat(0))};
    }

    Step Map(const Mapping& mapping, std::ptrdiff_t i, PixelVector cell) {
        const std::uint8_t* pixel = src + i * kStep * kPixelBytes;
        PixelVector color = PixelVector::Widen(LoadPixel<kPixelBytes>(pixel));
        if constexpr (kPixelBytes == 4) {
            if (pixel[3] == 0) {
                dst[i * kStep] = mapping.transIndex;
                return Pass(cell);
            }
            color = CompositePixel(color, mapping.below);
        }

        // The same result as DiffuseIn, followed by a look into the inverse map.
        const PixelVector errors = cell + share;
        const PixelVector corrected = (color + errors).Grouped() - (errors >> 2);
        const PixelVector wanted = corrected.Clamp();
        const std::uint8_t index = mapping.inverse[wanted.Cell()];
        dst[i * kStep] = index;

        // The same result as DiffuseOut. Each pixel needs the share of the pixel before it, so the
        // share is computed in as few dependent steps as possible: half of what remains of an error
        // e without its quarter is (3 * e + 3) >> 3, and three times the wanted colour is ready
        // before the palette entry has been loaded.
        const PixelVector error = wanted - PixelVector::LoadFour(mapping.levels[index]);
        const Step step = {errors, share + (error >> 2)};
        share = (wanted + wanted + wanted + PixelVector::Splat(3) -
                 PixelVector::LoadFour(mapping.tripled[index])) >>
                3;
        return step;
    }
};

// The pixels of a band and the two rows of errors.
struct Band {
    const std::uint8_t* src;
    std::uint8_t* dst;
    int columns;
    int firstRow;
    std::ptrdiff_t srcRowBytes, dstRowBytes;
    std::int16_t* errors;

    // The errors that row y of the picture receives. A spare cell at either end takes the error
    // that is pushed past the edge.
    std::int16_t* ErrorsInto(int y) const {
        return errors + (y & 1 ? (std::ptrdiff_t{columns} + 2) * 3 : 0);
    }
};

// Scans one row, or two rows of which the lower is always two pixels behind the upper. At this
// distance the error that the lower row needs is complete and still in a register. The steps of the
// two rows do not depend on each other, so the processor can work on both at once; in a single row
// each step has to wait for the one before it.
template <int kPixelBytes, int kStep, int kRows> struct RowGroup {
    static constexpr int kLag = kRows == 2 ? 2 : 0;

    RowGroup(const Band& band, int y) : columns(band.columns) {
        const int row = y - band.firstRow;
        const int first = kStep > 0 ? 0 : columns - 1;
        upper.src = band.src + row * band.srcRowBytes + std::ptrdiff_t{first} * kPixelBytes;
        upper.dst = band.dst + row * band.dstRowBytes + first;
        lower.src = upper.src + band.srcRowBytes;
        lower.dst = upper.dst + band.dstRowBytes;
        const std::ptrdiff_t firstCell = kStep > 0 ? 0 : (std::ptrdiff_t{columns} + 1) * 3;
        source = band.ErrorsInto(y) + firstCell;
        reached = band.ErrorsInto(y + kRows - 1) + firstCell;
        next = band.ErrorsInto(y + kRows) + firstCell;
    }

    // Scans cell `at` of the upper row and cell `at - kLag` of the lower one. Cells 0 and columns +
    // 1 are the spare ones; cells outside of these do not exist and are skipped. kInside promises
    // that both cells have a pixel.
    template <bool kInside> void Advance(const Mapping& mapping, std::ptrdiff_t at) {
        const auto go = [&](auto& row, std::ptrdiff_t rowAt, PixelVector cell) {
            return kInside || (rowAt >= 1 && rowAt <= columns) ? row.Map(mapping, rowAt - 1, cell)
                                                               : row.Pass(cell);
        };
        constexpr int kCell = 3 * kStep;
        Step step = go(upper, at,
                       kInside || at <= columns + 1 ? PixelVector::LoadThree(source + at * kCell)
                                                    : PixelVector::Splat(0));
        if constexpr (kRows == 2)
            step = go(lower, at - kLag, std::exchange(finishedAbove, step.finished));

        const std::ptrdiff_t last = at - kLag;
        if (kInside || (last >= 0 && last <= columns + 1))
            step.reached.StoreThree(reached + last * kCell);
        if (kInside || last >= 1) step.finished.StoreThree(next + (last - 1) * kCell);
    }

    RowScan<kPixelBytes, kStep> upper, lower;
    PixelVector finishedAbove = PixelVector::Splat(0);
    const std::int16_t* source; // the errors that the upper row receives
    std::int16_t* reached;      // where the errors accumulated in the last row are stored
    std::int16_t* next;         // the errors that the row after the group receives
    int columns;
};

template <int kPixelBytes, int kStep, int kRows>
void DiffuseRows(const Band& band, int y, const Mapping& mapping) {
    using Rows = RowGroup<kPixelBytes, kStep, kRows>;
    Rows rows(band, y);
    const int columns = band.columns;
    std::ptrdiff_t at = 0;
    for (; at <= Rows::kLag; ++at) rows.template Advance<false>(mapping, at);
    Rows inside = rows; // no address of this copy is taken, so it can stay in registers
    for (; at <= columns; ++at) inside.template Advance<true>(mapping, at);
    rows = inside;
    for (; at <= columns + Rows::kLag + 2; ++at) rows.template Advance<false>(mapping, at);
}

// Diffuses one band of a picture, with opacity when a pixel has 4 bytes.
template <int kPixelBytes> void DiffuseBand(const Band& band, int rows, const Mapping& mapping) {
    // Deliberate: the direction changes every second row, not every row. Error rows and direction
    // depend on the row number in the picture, so that the bands of a picture fit together.
    constexpr decltype(&DiffuseRows<kPixelBytes, 1, 1>) kScans[][2] = {
        {DiffuseRows<kPixelBytes, 1, 1>, DiffuseRows<kPixelBytes, 1, 2>},
        {DiffuseRows<kPixelBytes, -1, 1>, DiffuseRows<kPixelBytes, -1, 2>}};
    if (band.columns <= 0) return;
    const int bottom = band.firstRow + rows;
    for (int y = band.firstRow, together; y < bottom; y += together) {
        together = y % 2 == 0 && y + 1 < bottom ? 2 : 1;
        kScans[y >> 1 & 1][together - 1](band, y, mapping);
    }
}

} // namespace

void DiffuseColorNoTransparency(const std::uint8_t* src, std::uint8_t* dst, short rows,
                                short columns, short firstRow, std::int32_t srcRowBytes,
                                std::int32_t dstRowBytes, const RGBLookUpTable* table,
                                const std::uint8_t* inverse, std::int16_t* errors) {
    DiffuseBand<3>({src, dst, columns, firstRow, srcRowBytes, dstRowBytes, errors}, rows,
                   {*table, inverse, 0, 0});
}

void DiffuseColorWithTransparency(const std::uint8_t* src, std::uint8_t* dst, short rows,
                                  short columns, short firstRow, std::int32_t srcRowBytes,
                                  std::int32_t dstRowBytes, const RGBLookUpTable* table,
                                  const std::uint8_t* inverse, std::int16_t* errors,
                                  PackedColor transColor, std::int32_t transIndex) {
    DiffuseBand<4>({src, dst, columns, firstRow, srcRowBytes, dstRowBytes, errors}, rows,
                   {*table, inverse, transColor, transIndex});
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
