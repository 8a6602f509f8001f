// Reads a file while another thread writes it, so that it can be checked at the same time.
#pragma once

#include "ScanGif.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace gif89 {

/// A file to which another thread appends. From waits until the bytes it is asked for have been
/// written; it throws Problem when the file cannot be read or is abandoned.
class FollowedFile final : public GifSource {
  public:
    /// The descriptor is borrowed, open for reading; its own position is left alone.
    explicit FollowedFile(int descriptor) : file(descriptor) {}

    // For the thread that writes
    void Complete() { End(Stage::complete); } ///< the file will not grow any more
    void Abandon() { End(Stage::abandoned); } ///< the reader is to stop

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
    Stage stage = Stage::growing; ///< guarded by the mutex

    static constexpr std::size_t kBufferBytes = 65536;
    const std::unique_ptr<std::uint8_t[]> buffer =
        std::make_unique_for_overwrite<std::uint8_t[]>(kBufferBytes);
    std::size_t bufferOffset = 0; ///< place of the buffer's first byte in the file
    std::size_t filled = 0;
};

} // namespace gif89
