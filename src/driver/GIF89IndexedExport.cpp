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

// Working memory that prepare asks for in addition to the indices.
constexpr std::int32_t kTableBytes = 65536;
constexpr int kVisibleFrom = 128; // mask bytes below it hide a pixel, unless the mask is inverted
constexpr int kFirstGivenUp = 2;  // indices 0 and 1 are never given up for transparency

// The comment of the latest indexed export. It stays readable after finish, and the next indexed
// export frees it, on any thread.
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

// The entry nearest to one that is given up. Deliberate: while the search runs, the given up entry
// has the colour farthest from its own, so that it cannot be found itself. If it were made black
// instead, a nearly black entry could be replaced by itself, and visible pixels would be hidden.
// The table is the same afterwards.
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
    // The plane fields of the record are left as the host has set them, so that the first request
    // is for the index plane.
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
    // Copied row by row, because the bytes between the rows and behind the last one may not be
    // readable.
    for (int y = 0; y < shape.rows; ++y) {
        const std::ptrdiff_t offset = std::ptrdiff_t{y} * gifRowBytes;
        BlockMove(delivered.data + offset, gifBuffer + offset, shape.columns);
    }
    return noErr;
}

// Deliberate: the comment is not freed here, unlike in an RGB export. Whoever has its address may
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

    // The count was taken before the user chose the options. They may use an index that is past the
    // end of a table of that size, and no reader could decode such a file.
    const int highest = HighestIndex();
    if (highest >= 1 << CeilLog2(numColors)) numColors = highest + 1;
    numColors = std::max(numColors, 2);
    GetOutputFile();
}

// Nothing to do: the delivered index plane is written, as the options have left it.
void GIF89IndexedExport::MakeGIFBuffer() {}

short GIF89IndexedExport::GetMaskFromAlphaChannel(short plane, unsigned char invert,
                                                  int* transIndexOut) {
    const int rows = shape.rows, columns = shape.columns;
    if (plane == alphaPlane) {
        if (!alphaData) return memFullErr;
        // The pixels hidden before are those that carry the transparent index. The mask is made
        // anew from them.
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

// A partly delivered plane is refused.
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
