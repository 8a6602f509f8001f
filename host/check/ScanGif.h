// Reads a GIF file once from front to back and accepts only what our module writes. Used to check a
// file while it is written or afterwards.
#pragma once

#include "ColorTable.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace gif89 {

/// What stands in a GIF file before its pixels.
struct GifHead {
    int rows = 0;
    int columns = 0;
    bool interlaced = false;
    int transparentIndex = -1; ///< -1 for none
    int colors = 0;            ///< entries of the colour table, a power of two, 2..256
    RGBLookUpTable table = {};
    std::optional<std::string> comment;
};

/// Delivers the bytes of a file.
class GifSource {
  public:
    /// At least `count` bytes from `offset` on; fewer only when the file ends before. They stay
    /// valid until the next call. Offsets never decrease from call to call.
    virtual std::span<const std::uint8_t> From(std::size_t offset, std::size_t count) = 0;

  protected:
    ~GifSource() = default;
};

/// Receives the pixels of a file.
class GifSink {
  public:
    /// Called before the first pixel. The image data begin at `dataOffset` with their first
    /// sub-block; the first codes have `rootSize + 1` bits. May throw to stop.
    virtual void Begin(const GifHead& head, std::size_t dataOffset, int rootSize) = 0;
    /// Receives neighbouring pixels of one row. Rows come in the order of the file; an interlaced
    /// file has them in four passes.
    virtual void Take(int row, int column, std::span<const std::uint8_t> indices) = 0;

  protected:
    ~GifSink() = default;
};

/// Reads a file that holds exactly one image covering the screen, with a global colour table.
/// Throws Problem, with the byte offset, for anything else: a wrong signature, a block cut short,
/// an impossible code, too few or too many pixels, an index past the table, bytes after the
/// trailer. When it throws, the sink may have got some of the pixels; otherwise it has got each of
/// them once. Throws std::bad_alloc when there is no memory; it needs at most 9 megabytes.
void ScanGif(GifSource& source, GifSink& sink);

} // namespace gif89
