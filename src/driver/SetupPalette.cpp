// Which colours an RGB export writes: the picture's own, an adaptive palette, or a supplied one.
#include "SetupPalette.h"

#include "AdaptivePalette.h"
#include "GIF89RGBExport.h"
#include "Histogram.h"
#include "IterateArea.h"

#include <bitset>
#include <cstring>

namespace {

constexpr RGBtuple kBlack = {};

bool IsBlack(const RGBLookUpTable& table, int index) {
    return (table.red[index] | table.green[index] | table.blue[index]) == 0;
}

// Reduces `supplied` to `colors` entries. The entries nearest to the adaptive colours in `palette`
// come first, then the others, each group in its own order. The adaptive colours only show which
// supplied ones the picture needs; none of them is written.
void KeepNeededColors(const RGBLookUpTable& supplied, int colors, RGBLookUpTable& palette) {
    std::bitset<256> needed;
    for (int i = 0; i < colors; ++i)
        needed.set(static_cast<std::size_t>(FindMatchingIndex(&supplied, TableEntry(palette, i))));
    int filled = 0;
    for (const bool wanted : {true, false})
        for (int i = 0; i < 256 && filled < colors; ++i)
            if (needed[static_cast<std::size_t>(i)] == wanted)
                SetTableEntry(palette, filled++, TableEntry(supplied, i));
}

} // namespace

int FindMatchingIndex(const RGBLookUpTable* table, RGBtuple color) {
    int nearest = 0;
    int smallest = 0;
    for (int i = 0; i < 256; ++i) {
        const int red = table->red[i] - color.red;
        const int green = table->green[i] - color.green;
        const int blue = table->blue[i] - color.blue;
        const int distance = red * red + green * green + blue * blue;
        if (distance == 0) return i;
        if (i == 0 || distance < smallest) {
            smallest = distance;
            nearest = i;
        }
    }
    return nearest;
}

int TrimTopBlacks(const RGBLookUpTable* table, int count, int floor) {
    int last = count - 1;
    while (last > floor && IsBlack(*table, last)) --last;
    return last + 1;
}

void AdaptiveTable(RGBLookUpTable* table, short colors, std::uint8_t* histogram,
                   ExportRecord* record, const PictureShape& shape, RGBtuple transparentColor) {
    std::memset(histogram, 0, sizeof(Histogram));
    auto& cells = *reinterpret_cast<Histogram*>(histogram);
    // Deliberate: the result of this pass is ignored. A host that fails or is cancelled here
    // answers the same in the next pass, whose result counts, before anything is written.
    const Rect whole = shape.Bounds();
    if (shape.hasTransparency) {
        HistInfo info = {&cells, PackColor(transparentColor)};
        IterateArea(record, &whole, 0, 3, AsTileProc<CalcHistogram3DWithTransparency>,
                    TileRefCon(&info));
    } else {
        IterateArea(record, &whole, 0, 2, AsTileProc<CalcHistogram3DNoTransparency>,
                    TileRefCon(&cells));
    }
    MakeAdaptivePalette(table, colors, cells);
}

short GIF89RGBExport::SetupPalette(unsigned char exact, unsigned char supplied) {
    unsigned char mayResize = 0;
    std::memcpy(&mayResize, &suppliedPaletteFlag, 1);
    const bool resize = !exact && mayResize && supplied && numColors != suppliedPaletteCount;

    if (exact) {
        numColors = exactInfo.count;
        MakeExactTable(&exactInfo, &palette);
    } else if (!supplied || resize) {
        const RGBLookUpTable saved = palette;
        AdaptiveTable(&palette, static_cast<short>(numColors), gifBuffer, exportRecord, shape,
                      transparentColor);
        if (resize) KeepNeededColors(saved, numColors, palette);
    }
    for (int i = numColors; i < 256; ++i) SetTableEntry(palette, i, kBlack);

    if (shape.hasTransparency) {
        // With a floor of numColors - 1 this leaves the count as it is.
        numColors = TrimTopBlacks(&palette, numColors, numColors - 1);
        if (numColors < 256) {
            transIndex = static_cast<std::int16_t>(numColors);
            SetTableEntry(palette, numColors++, transparentColor);
        } else {
            transIndex = static_cast<std::int16_t>(FindMatchingIndex(&palette, transparentColor));
        }
    }
    return error;
}
