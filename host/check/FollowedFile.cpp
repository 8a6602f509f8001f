#include "FollowedFile.h"

#include "Descriptor.h"
#include "Problem.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace gif89 {

void FollowedFile::End(Stage how) {
    {
        const std::scoped_lock lock(mutex);
        stage = how;
    }
    ended.notify_all();
}

FollowedFile::Stage FollowedFile::CurrentStage() {
    const std::scoped_lock lock(mutex);
    return stage;
}

// How long to wait before looking for new bytes, because the system has no cheap way to announce a
// write. A file of a megabyte takes about ten milliseconds to write.
void FollowedFile::WaitAWhile() {
    std::unique_lock lock(mutex);
    ended.wait_for(lock, std::chrono::microseconds(200),
                   [this] { return stage != Stage::growing; });
}

bool FollowedFile::ReadMore() {
    const ssize_t got = Uninterrupted([&] {
        return pread(file, buffer.get() + filled, kBufferBytes - filled,
                     static_cast<off_t>(bufferOffset + filled));
    });
    if (got < 0) throw OutputProblem("the finished file cannot be read back: " + SystemReason());
    filled += static_cast<std::size_t>(got);
    return got > 0;
}

std::span<const std::uint8_t> FollowedFile::From(std::size_t offset, std::size_t count) {
    const std::size_t passed = offset - bufferOffset;
    if (filled - passed < count && passed > 0) {
        std::memmove(buffer.get(), buffer.get() + passed, filled - passed);
        filled -= passed;
        bufferOffset = offset;
    }
    while (bufferOffset + filled < offset + count) {
        const Stage before =
            CurrentStage(); // taken before reading: a complete file has all its bytes
        if (before == Stage::abandoned) throw Problem("the file was given up");
        if (ReadMore()) continue;
        if (before == Stage::complete) break;
        WaitAWhile();
    }
    const std::size_t first = offset - bufferOffset;
    return {buffer.get() + first, filled - first};
}

} // namespace gif89
