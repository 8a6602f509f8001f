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

/// Checks a file on a thread of its own while the module writes it. The picture's colours are
/// counted first, while the module still reads its pixels; then the file is decoded and compared as
/// it grows. Small pictures are not worth a thread and are checked afterwards.
class FileCheck {
  public:
    /// Both pictures must stay unchanged during the life of this object. The file is compared with
    /// `original`.
    FileCheck(const Picture& originalPicture, const Picture& exportedPicture, bool keepIndices);
    FileCheck(const FileCheck&) = delete;
    FileCheck& operator=(const FileCheck&) = delete;
    ~FileCheck();

    /// Starts the check while the file is still empty. The descriptor is borrowed and stays open.
    void Begin(int descriptor);
    /// Finishes the check once the file is complete; `palette` is as in the report. Throws
    /// OutputProblem when the file is not a GIF file of the picture's size and comment. Call it
    /// once, after Begin.
    CheckedGif Finish(PaletteKind palette);

  private:
    std::int64_t WaitForColors();

    /// Passes the decoded pixels to the comparison and, if the indices are to be kept, to the
    /// collector.
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
    std::future<std::int64_t> colors; ///< of the original; ready when the comparison is complete
};

} // namespace gif89
