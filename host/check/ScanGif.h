// Goes through a GIF file once, strictly, from front to back: to check what the module wrote, as it
// is written or afterwards.
#pragma once

#include "ColorTable.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace gif89 {

/// What a GIF file says before its pixels.
struct GifHead {
    int rows = 0;
    int columns = 0;
    bool interlaced = false;
    int transparentIndex = -1; ///< -1 for none
    int colors = 0;            ///< entries of the colour table, a power of two, 2..256
    RGBLookUpTable table = {};
    std::optional<std::string> comment;
};

/// Where a file's bytes come from.
class GifSource {
  public:
    /// The bytes from `offset` on, `count` of them or more, fewer only where the file ends before.
    /// They stay valid until the next call, whose offset is never a lower one.
    virtual std::span<const std::uint8_t> From(std::size_t offset, std::size_t count) = 0;

  protected:
    ~GifSource() = default;
};

/// Where a file's pixels go.
class GifSink {
  public:
    /// The bytes of pixel data begin at `dataOffset` with their first sub-block, in codes of
    /// `rootSize + 1` bits. May throw to stop.
    virtual void Begin(const GifHead& head, std::size_t dataOffset, int rootSize) = 0;
    /// Pixels of one row side by side. They come in the order of the file, which takes the rows of
    /// an interlaced picture in four passes.
    virtual void Take(int row, int column, std::span<const std::uint8_t> indices) = 0;

  protected:
    ~GifSink() = default;
};

/// Reads a file that holds exactly one image covering the screen, with a global colour table.
/// Throws Problem, with the byte offset, for anything else: a wrong signature, a block cut short,
/// an impossible code, too few or too many pixels, an index past the table, bytes after the
/// trailer. The sink may have taken pixels before; it takes every pixel once when nothing is
/// thrown. Throws std::bad_alloc when there is no memory; no more than 9 megabytes are asked for.
void ScanGif(GifSource& source, GifSink& sink);

} // namespace gif89
