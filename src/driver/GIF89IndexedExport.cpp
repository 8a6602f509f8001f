// The indexed export: the picture's own indices and palette, with transparency from a channel.
#include "GIF89IndexedExport.h"

#include "IterateArea.h"
#include "MemoryManager.h"
#include "SetupPalette.h"
#include "WriteGIF89.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <utility>

namespace {

// Working memory that is asked for beside the indices.
constexpr std::int32_t kTableBytes = 65536;
constexpr int kVisibleFrom = 128; // mask bytes below it hide, unless the mask is inverted
constexpr int kFirstGivenUp = 2;  // indices 0 and 1 are never given up for transparency

// The comment of the latest indexed export. Finish leaves it readable, and the next one frees it,
// on whatever thread that one runs.
std::atomic<char*> keptComment = nullptr;

bool IsVisible(std::uint8_t mask, unsigned char invert) {
    return (mask < kVisibleFrom) == (invert != 0);
}

// How many visible pixels carry each index.
std::array<std::int64_t, 256> CountVisible(const std::uint8_t* indices, std::int32_t indexRowBytes,
                                           const std::uint8_t* mask, std::int32_t maskRowBytes,
                                           std::int32_t rows, std::int32_t columns,
                                           unsigned char invert) {
    std::array<std::int64_t, 256> counts = {};
    for (std::int32_t y = 0; y < rows; ++y, indices += indexRowBytes, mask += maskRowBytes)
        for (std::int32_t x = 0; x < columns; ++x)
            if (IsVisible(mask[x], invert)) ++counts[indices[x]];
    return counts;
}

// The nearest other entry to one that is given up. Deliberate: its own colour moves for the moment
// to the farthest corner of the colour cube, where no search for it can end. Were it black, the
// search for a colour that is black or nearly so could end at the entry itself, and visible pixels
// would be hidden. The table is left as it was.
int FindReplacement(RGBLookUpTable& table, int givenUp) {
    const RGBtuple color = TableEntry(table, givenUp);
    const auto away = [](std::uint8_t level) { return std::uint8_t(level < 128 ? 255 : 0); };
    SetTableEntry(table, givenUp, {0, away(color.red), away(color.green), away(color.blue)});
    const int replacement = FindMatchingIndex(&table, color);
    SetTableEntry(table, givenUp, color);
    return replacement;
}

} // namespace

std::int32_t GIF89IndexedExport::SizeBuffers(std::int32_t& gifBufferSize) {
    gifBufferSize = 0;
    return shape.rows * shape.columns + kTableBytes;
}

short GIF89IndexedExport::AllocateBuffers() {
    // The planes are left as the host has them: the first request brings the index plane.
    DeliveredArea delivered;
    if (const short code = RequestPlane(&delivered)) return code;
    alphaData = nullptr;
    alphaPlane = -1;
    gifRowBytes = delivered.rowBytes;
    gifBuffer = delivered.data;
    if (shape.planes < 2) return noErr;

    // A later request for another plane uses the host's memory again.
    gifBuffer = NewPtr(Size{shape.rows} * gifRowBytes);
    if (!gifBuffer) return memFullErr;
    ownsGifBuffer = true;
    // Row by row: what lies between the rows, and behind the last one, need not be readable.
    for (int y = 0; y < shape.rows; ++y) {
        const std::ptrdiff_t offset = std::ptrdiff_t{y} * gifRowBytes;
        BlockMove(delivered.data + offset, gifBuffer + offset, shape.columns);
    }
    return noErr;
}

// Deliberate: the comment is not freed here, unlike on the RGB path; whoever noted its address may
// read it until the next indexed export.
void GIF89IndexedExport::DeallocateBuffers() {
    if (ownsGifBuffer) DisposePtr(gifBuffer);
    gifBuffer = nullptr;
    ownsGifBuffer = false;
    if (!comment) return;
    char* const older = keptComment.exchange(std::exchange(comment, nullptr));
    DisposePtr(reinterpret_cast<Ptr>(older));
}

void GIF89IndexedExport::GetParameters() {
    std::memcpy(palette.red, exportRecord->hostRedTable, 256);
    std::memcpy(palette.green, exportRecord->hostGreenTable, 256);
    std::memcpy(palette.blue, exportRecord->hostBlueTable, 256);
    numColors = TrimTopBlacks(&palette, 256, HighestIndex());
    error = dialogs->indexed(*this);
    if (error != noErr) return;

    // The count was taken before the options were known. They may have put an index to use that
    // the table of that count does not hold; no reader could decode such a file.
    const int highest = HighestIndex();
    if (highest >= 1 << CeilLog2(numColors)) numColors = highest + 1;
    numColors = std::max(numColors, 2);
    GetOutputFile();
}

// The index plane that was delivered, or what the options made of it, is what is written.
void GIF89IndexedExport::MakeGIFBuffer() {}

short GIF89IndexedExport::GetMaskFromAlphaChannel(short plane, unsigned char invert,
                                                  int* transIndexOut) {
    const int rows = shape.rows, columns = shape.columns;
    if (plane == alphaPlane) {
        if (!alphaData) return memFullErr;
        // What was hidden before is what the transparent index marks; the mask is made from that.
        std::uint8_t* row = alphaData;
        for (int y = 0; y < rows; ++y, row += alphaRowBytes)
            for (int x = 0; x < columns; ++x)
                row[x] = (row[x] == *transIndexOut) == (invert != 0) ? 0 : 255;
    } else {
        exportRecord->requestFirstPlane = plane;
        exportRecord->requestLastPlane = plane;
        DeliveredArea delivered;
        if (const short code = RequestPlane(&delivered)) return code;
        alphaData = delivered.data;
        alphaRowBytes = delivered.rowBytes;
        alphaPlane = plane;
    }
    *transIndexOut = MaskDataWithAlpha(gifBuffer, gifRowBytes, alphaData, alphaRowBytes, &palette,
                                       rows, columns, invert);
    return noErr;
}

// A plane is taken whole or not at all.
short GIF89IndexedExport::RequestPlane(DeliveredArea* delivered) {
    const Rect whole = shape.Bounds();
    if (const short code = RequestArea(*exportRecord, whole, 1, delivered)) return code;
    return delivered->area == whole ? noErr : paramErr;
}

int GIF89IndexedExport::HighestIndex() const {
    return FindMaxValue(gifBuffer, shape.rows, shape.columns, gifRowBytes);
}

int FindMaxValue(const std::uint8_t* data, std::int32_t rows, std::int32_t columns,
                 std::int32_t rowBytes) {
    std::uint8_t highest = 0;
    for (std::int32_t y = 0; y < rows; ++y, data += rowBytes)
        for (std::int32_t x = 0; x < columns; ++x) highest = std::max(highest, data[x]);
    return highest;
}

int MaskDataWithAlpha(const std::uint8_t* indexData, std::int32_t indexRowBytes,
                      std::uint8_t* alphaData, std::int32_t alphaRowBytes, RGBLookUpTable* table,
                      std::int32_t rows, std::int32_t columns, unsigned char invert) {
    const auto counts =
        CountVisible(indexData, indexRowBytes, alphaData, alphaRowBytes, rows, columns, invert);
    const auto* const unused = std::find(counts.begin(), counts.end(), 0);
    int transparent = static_cast<int>(unused - counts.begin());
    int replacement = transparent;
    if (unused == counts.end()) {
        const auto* const rarest = std::min_element(counts.begin() + kFirstGivenUp, counts.end());
        transparent = static_cast<int>(rarest - counts.begin());
        replacement = FindReplacement(*table, transparent);
    }
    for (std::int32_t y = 0; y < rows; ++y, indexData += indexRowBytes, alphaData += alphaRowBytes)
        for (std::int32_t x = 0; x < columns; ++x) {
            int index = transparent;
            if (IsVisible(alphaData[x], invert))
                index = indexData[x] == transparent ? replacement : indexData[x];
            alphaData[x] = static_cast<std::uint8_t>(index);
        }
    return transparent;
}
