// Decodes a complete GIF file in memory.
#pragma once

#include "ScanGif.h"

#include <memory>

namespace gif89 {

/// The only image of a GIF file.
struct DecodedGif : GifHead {
    std::unique_ptr<std::uint8_t[]> indices; ///< rows x columns, top row first, no padding
};

/// Decodes a file that ScanGif accepts; throws Problem for any other. Throws std::bad_alloc when
/// there is no memory. A small file cannot make it allocate more pixels than its data can hold.
DecodedGif DecodeGif(std::span<const std::uint8_t> file);

/// Stores the pixels of a scanned file.
class GifCollector final : public GifSink {
  public:
    void Begin(const GifHead& head, std::size_t dataOffset, int rootSize) override;
    void Take(int row, int column, std::span<const std::uint8_t> indices) override;

    DecodedGif gif;
};

} // namespace gif89
