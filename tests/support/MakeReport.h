// A report on a file that is given decoded.
#pragma once

#include "CountColors.h"
#include "DecodeGif.h"
#include "GifComparison.h"

namespace gif89 {

inline ExportReport MakeReport(const Picture& picture, const DecodedGif& gif) {
    GifComparison comparison(picture);
    comparison.Begin(gif, 0, 8);
    const auto columns = static_cast<std::size_t>(gif.columns);
    for (int y = 0; y < gif.rows; ++y)
        comparison.Take(y, 0, {gif.indices.get() + static_cast<std::size_t>(y) * columns, columns});
    return comparison.Report(picture, CountColors(picture), 50, PaletteKind::exact);
}

} // namespace gif89
