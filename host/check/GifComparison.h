// Compares a GIF file with the picture it was made of, pixel by pixel as they are decoded.
#pragma once

#include "ExportReport.h"
#include "Picture.h"
#include "ScanGif.h"

#include <bitset>
#include <vector>

namespace gif89 {

class GifComparison final : public GifSink {
  public:
    /// `original` is the picture as it was read.
    explicit GifComparison(const Picture& originalPicture);

    /// Throws Problem when the file has another size than the picture.
    void Begin(const GifHead& head, std::size_t dataOffset, int rootSize) override;
    void Take(int row, int column, std::span<const std::uint8_t> indices) override;

    const GifHead& Head() const { return gif; }
    /// To be called once, after the last pixel. `exported` is the picture that was handed to the
    /// module, often the original. `sourceColors` is the result of CountColors for the original,
    /// `bytes` is the size of the file, and `palette` is as in the report.
    ExportReport Report(const Picture& exported, std::int64_t sourceColors, std::size_t bytes,
                        PaletteKind palette);

  private:
    /// A pixel of the original or of the file.
    struct Pixel {
        int red, green, blue;
        int opacity;

        PackedColor Color() const { return PackedColor(red << 16 | green << 8 | blue); }
    };
    using Indices = std::span<const std::uint8_t>;

    void TakeOpaque(std::size_t first, Indices indices);
    void TakeIndexed(std::size_t first, Indices indices);
    template <typename Fetch> void TakeAny(Fetch fetch, std::size_t first, Indices indices);
    void Add(const Pixel& was, int index, std::int64_t times);
    void AddPairs();

    const Picture& original;
    const std::uint8_t* const opacity; ///< of an indexed picture; null for opaque ones
    GifHead gif;
    ExportReport report;
    Pixel shown[256] = {}; ///< entries of the file; opacity 0 or 255
    std::uint8_t shownBytes[256][4] = {};
    std::vector<std::uint8_t> line;  ///< pixels of the file as red, green, blue
    std::vector<std::int32_t> pairs; ///< counts by both indices; for opaque indexed pictures
    bool used[256] = {};
    std::bitset<256> levels;
    std::int64_t compared = 0, errorSum = 0;
};

} // namespace gif89
