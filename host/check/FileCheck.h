// Checks a GIF file against its picture while the module writes it.
#pragma once

#include "DecodeGif.h"
#include "FollowedFile.h"
#include "GifComparison.h"

#include <future>
#include <optional>

namespace gif89 {

/// What the module wrote, as it was read back.
struct CheckedGif {
    ExportReport report;
    DecodedGif gif; ///< empty unless its indices were to be kept
};

/// Follows a file on a thread of its own: the picture's colours are counted while the module looks
/// at its pixels, and the file is decoded and compared as it is written. Small pictures, for which
/// that is not worth a thread, are checked afterwards.
class FileCheck {
  public:
    /// Both pictures stay as they are until this ends; `original` is the one to compare with.
    FileCheck(const Picture& originalPicture, const Picture& exportedPicture, bool keepIndices);
    FileCheck(const FileCheck&) = delete;
    FileCheck& operator=(const FileCheck&) = delete;
    ~FileCheck();

    /// Begins with the file, which is still empty. The descriptor is borrowed and stays open.
    void Begin(int descriptor);
    /// Ends with the file, which is complete; `palette` is the one that the
    /// module used. Throws
    /// OutputProblem when the file is not a GIF file of the picture's size and comment. Called
    /// once, after Begin.
    CheckedGif Finish(PaletteKind palette);

  private:
    std::int64_t WaitForColors();

    /// Decodes the file for the comparison and, where its indices are kept, for the collector.
    class Sink final : public GifSink {
      public:
        Sink(const Picture& original, bool keepIndices);
        void Begin(const GifHead& head, std::size_t dataOffset, int rootSize) override;
        void Take(int row, int column, std::span<const std::uint8_t> indices) override;

        GifComparison comparison;
        std::optional<GifCollector> collector;
    };

    const Picture& original;
    const Picture& exported;
    Sink sink;
    int file = -1;
    std::optional<FollowedFile> followed;
    std::future<std::int64_t> colors; ///< of the original, when the whole file has been compared
};

} // namespace gif89
