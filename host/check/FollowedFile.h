// Reads a file while another thread writes it, so that it can be checked at the same time.
#pragma once

#include "ScanGif.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace gif89 {

/// A file that grows at its end and nowhere else, read as far as it has come. From waits for bytes
/// that are still to come; it throws Problem when the file cannot be read or is abandoned.
class FollowedFile final : public GifSource {
  public:
    /// The descriptor is borrowed, open for reading; its own position is left alone.
    explicit FollowedFile(int descriptor) : file(descriptor) {}

    // For the thread that writes
    void Complete() { End(Stage::complete); } ///< nothing follows any more
    void Abandon() { End(Stage::abandoned); } ///< nobody wants to know any more

    // For the thread that reads
    std::span<const std::uint8_t> From(std::size_t offset, std::size_t count) override;

  private:
    enum class Stage : std::uint8_t { growing, complete, abandoned };
    void End(Stage how);
    Stage CurrentStage();
    void WaitAWhile();
    /// False when there is nothing more at the moment.
    bool ReadMore();

    const int file;
    std::mutex mutex;
    std::condition_variable ended;
    Stage stage = Stage::growing; ///< guarded

    static constexpr std::size_t kBufferBytes = 65536;
    const std::unique_ptr<std::uint8_t[]> buffer =
        std::make_unique_for_overwrite<std::uint8_t[]>(kBufferBytes);
    std::size_t bufferOffset = 0; ///< of its first byte in the file
    std::size_t filled = 0;
};

} // namespace gif89
