#include "GifComparison.h"

#include "Problem.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>

namespace gif89 {

GifComparison::GifComparison(const Picture& originalPicture)
    : original(originalPicture), opacity(OpacityOf(originalPicture)) {
    if (original.kind == Picture::Kind::indexed && !opacity) pairs.resize(std::size_t{256} * 256);
}

void GifComparison::Begin(const GifHead& head, std::size_t, int) {
    if (head.rows != original.rows || head.columns != original.columns)
        throw Problem("the finished file has another size than the picture");
    gif = head;
    for (int index = 0; index < 256; ++index) {
        const RGBtuple entry = TableEntry(gif.table, index);
        shown[index] = {entry.red, entry.green, entry.blue,
                        index == gif.transparentIndex ? 0 : 255};
        shownBytes[index][0] = entry.red;
        shownBytes[index][1] = entry.green;
        shownBytes[index][2] = entry.blue;
    }
    line.resize(static_cast<std::size_t>(gif.columns) * 3 + 1); // see TakeOpaque
}

void GifComparison::Take(int row, int column, Indices indices) {
    const std::size_t first =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(gif.columns) +
        static_cast<std::size_t>(column);
    const std::uint8_t* const pixels = original.pixels.get();
    if (original.kind == Picture::Kind::indexed) {
        if (!opacity) return TakeIndexed(first, indices);
        return TakeAny(
            [this, pixels](std::size_t n) {
                const RGBtuple color = TableEntry(original.table, pixels[n]);
                return Pixel{color.red, color.green, color.blue, opacity[n]};
            },
            first, indices);
    }
    const bool isOpaque = original.kind == Picture::Kind::rgb;
    if (isOpaque && gif.transparentIndex < 0) return TakeOpaque(first, indices);
    const std::size_t step = isOpaque ? 3 : 4;
    TakeAny(
        [pixels, step](std::size_t n) {
            const std::uint8_t* const pixel = pixels + n * step;
            return Pixel{pixel[0], pixel[1], pixel[2], step == 4 ? pixel[3] : 255};
        },
        first, indices);
}

// Counts how often each pair of indices occurs. There are few different pairs, so the colours of
// each are compared only once.
void GifComparison::TakeIndexed(std::size_t first, Indices indices) {
    const std::uint8_t* was = original.pixels.get() + first;
    for (const std::uint8_t index : indices) ++pairs[static_cast<std::size_t>(*was++ << 8 | index)];
}

void GifComparison::AddPairs() {
    for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
        if (pairs[pair] == 0) continue;
        const RGBtuple color = TableEntry(original.table, static_cast<int>(pair >> 8));
        Add({color.red, color.green, color.blue, 255}, pair & 255, pairs[pair]);
    }
}

// For photographs. The file's pixels are expanded to the picture's layout, so that the compiler can
// compute the differences of many bytes at a time. Each pixel is stored as four bytes, of which the
// next one overwrites the fourth.
void GifComparison::TakeOpaque(std::size_t first, Indices indices) {
    const std::uint8_t* const was = original.pixels.get() + first * 3;
    const std::size_t samples = indices.size() * 3;
    std::uint8_t* const written = line.data();
    std::uint8_t* is = written;
    std::int32_t changed = 0;
    for (const std::uint8_t index : indices) {
        const std::uint8_t* const pixel = was + (is - written);
        std::memcpy(is, shownBytes[index], 4);
        changed += ((pixel[0] ^ is[0]) | (pixel[1] ^ is[1]) | (pixel[2] ^ is[2])) != 0;
        used[index] = true;
        is += 3;
    }
    std::int32_t sum = 0; // at most 32767 x 3 x 255
    int largest = 0;
    for (std::size_t n = 0; n < samples; ++n) {
        const int error = std::abs(was[n] - written[n]);
        sum += error;
        largest = std::max(largest, error);
    }
    report.changedPixels += changed;
    report.largestError = std::max(report.largestError, largest);
    errorSum += sum;
    compared += static_cast<std::int64_t>(indices.size());
}

template <typename Fetch>
void GifComparison::TakeAny(Fetch fetch, std::size_t first, Indices indices) {
    for (const std::uint8_t index : indices) Add(fetch(first++), index, 1);
}

void GifComparison::Add(const Pixel& was, int index, std::int64_t times) {
    const Pixel& is = shown[index];
    used[index] = true;
    if (was.opacity == 255 && is.opacity == 255) {
        const int red = std::abs(was.red - is.red), green = std::abs(was.green - is.green),
                  blue = std::abs(was.blue - is.blue);
        const int sum = red + green + blue;
        compared += times;
        errorSum += sum * times;
        if (sum > 0) report.changedPixels += times;
        report.largestError = std::max({report.largestError, red, green, blue});
        return;
    }
    const bool hidden = is.opacity == 0;
    if (was.opacity == 0 && hidden) return;
    report.changedPixels += times;
    if (hidden) report.madeTransparent += times;
    if (was.opacity == 0) report.madeOpaque += times;
    if (was.opacity == 0 || was.opacity == 255) return;
    report.partlyOpaque += times;
    levels.set(static_cast<std::size_t>(was.opacity));
}

ExportReport GifComparison::Report(const Picture& exported, std::int64_t sourceColors,
                                   std::size_t bytes, PaletteKind palette) {
    AddPairs();
    std::set<PackedColor> visible;
    for (int index = 0; index < 256; ++index) {
        report.usedEntries += used[index];
        if (used[index] && shown[index].opacity > 0) visible.insert(shown[index].Color());
    }
    report.shownColors = static_cast<int>(visible.size());
    report.sourceColors = sourceColors;
    report.alphaLevels = static_cast<int>(levels.count());
    if (compared > 0)
        report.meanError = static_cast<double>(errorSum) / (3.0 * static_cast<double>(compared));
    report.rows = gif.rows;
    report.columns = gif.columns;
    report.pixels = std::int64_t{gif.rows} * gif.columns;
    report.bytes = bytes;
    report.interlaced = gif.interlaced;
    report.transparentIndex = gif.transparentIndex;
    report.tableEntries = gif.colors;
    report.way = exported.kind != Picture::Kind::indexed ? Way::module
                 : exported.notes.reduced                ? Way::reduced
                 : exported.notes.madeIndexed            ? Way::fewColors
                                                         : Way::ownTable;
    report.palette = palette;
    report.comment = gif.comment                ? CommentFate::kept
                     : exported.comment.empty() ? CommentFate::none
                                                : CommentFate::dropped;
    report.notes = original.notes;
    return std::move(report);
}

} // namespace gif89
