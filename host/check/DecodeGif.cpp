#include "DecodeGif.h"

#include "Problem.h"

#include <algorithm>

namespace gif89 {

namespace {

constexpr std::size_t kMostStrings = 4096;

class FileInMemory final : public GifSource {
  public:
    explicit FileInMemory(std::span<const std::uint8_t> bytes) : file(bytes) {}
    std::span<const std::uint8_t> From(std::size_t offset, std::size_t) override {
        return file.subspan(std::min(offset, file.size()));
    }

  private:
    std::span<const std::uint8_t> file;
};

// The number of data bytes in the sub-blocks from `offset` to the terminator or the file's end.
std::size_t CountDataBytes(std::span<const std::uint8_t> file, std::size_t offset) {
    std::size_t total = 0;
    while (offset < file.size() && file[offset] != 0) {
        total += file[offset];
        offset += file[offset] + std::size_t{1};
    }
    return total;
}

/// Collects the pixels, but allocates memory only when the data can hold that many of them. A code
/// stands for at most as many pixels as there are codes up to it, and for at most as many as the
/// string table has entries.
class CarefulCollector final : public GifSink {
  public:
    explicit CarefulCollector(std::span<const std::uint8_t> bytes) : file(bytes) {}

    void Begin(const GifHead& head, std::size_t dataOffset, int rootSize) override {
        const std::size_t dataBytes = CountDataBytes(file, dataOffset);
        const std::size_t codes = dataBytes * 8 / static_cast<std::size_t>(rootSize + 1);
        const std::size_t most = codes * std::min(codes, kMostStrings);
        const auto pixels =
            static_cast<std::size_t>(head.rows) * static_cast<std::size_t>(head.columns);
        if (most < pixels)
            throw Problem("at byte " + std::to_string(dataOffset) + ": " +
                          std::to_string(dataBytes) + " bytes of data cannot hold " +
                          std::to_string(pixels) + " pixels");
        collector.Begin(head, dataOffset, rootSize);
    }
    void Take(int row, int column, std::span<const std::uint8_t> indices) override {
        collector.Take(row, column, indices);
    }

    GifCollector collector;

  private:
    std::span<const std::uint8_t> file;
};

} // namespace

void GifCollector::Begin(const GifHead& head, std::size_t, int) {
    static_cast<GifHead&>(gif) = head;
    gif.indices = std::make_unique_for_overwrite<std::uint8_t[]>(
        static_cast<std::size_t>(head.rows) * static_cast<std::size_t>(head.columns));
}

void GifCollector::Take(int row, int column, std::span<const std::uint8_t> indices) {
    std::uint8_t* const place = gif.indices.get() + std::ptrdiff_t{row} * gif.columns + column;
    std::copy(indices.begin(), indices.end(), place);
}

DecodedGif DecodeGif(std::span<const std::uint8_t> file) {
    FileInMemory source(file);
    CarefulCollector sink(file);
    ScanGif(source, sink);
    return std::move(sink.collector.gif);
}

} // namespace gif89
