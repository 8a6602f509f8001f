// A file or standard input as a stream of bytes, read once from front to back.
#pragma once

#include "Problem.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace gif89 {

/// A file cannot be read, for a reason of the system and not because of its content.
class InputProblem : public Problem {
  public:
    using Problem::Problem;
};

/// Reads bytes in order, buffered and without seeking, so that a pipe can be read like a file.
/// Every member that reads throws InputProblem with the system's reason when the system reports an
/// error; an error is never taken for the end of the file.
class InputFile {
  public:
    /// How many bytes Peek shows.
    static constexpr std::size_t kPeekBytes = 16;

    /// Opens the file of that name, any bytes. Throws Problem when it is missing, may not be read
    /// or is a folder.
    static InputFile Open(const std::string& path);

    /// Reads standard input, which stays open afterwards.
    static InputFile StandardInput();

    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&&) = delete;
    ~InputFile();

    /// The next bytes without taking them: kPeekBytes, or fewer when the file ends before. They
    /// stay valid until the next call of any other member.
    std::span<const std::uint8_t> Peek();

    /// Takes `count` bytes; fewer only when the file ends before. Returns how many.
    std::size_t Read(std::uint8_t* bytes, std::size_t count);

    /// Takes one byte; -1 at the end.
    int ReadByte();

    /// Takes what is buffered, or waits for more when nothing is; empty only at the end. The
    /// bytes stay valid until the next call of any member.
    std::span<const std::uint8_t> ReadAvailable();

    /// Takes everything up to the end, for formats that are not written in reading order. Throws
    /// Problem when there is more than `mostBytes` of it or not enough memory.
    std::vector<std::uint8_t> ReadRest(std::size_t mostBytes = kMostBytes);

    /// The size of a file with the largest picture that we accept, four samples a pixel,
    /// uncompressed.
    static constexpr std::size_t kMostBytes = std::size_t{1} << 32;

  private:
    enum class Ownership : std::uint8_t { owned, borrowed };

    InputFile(int fileDescriptor, Ownership fileOwnership);
    bool Fill();
    std::size_t ReadFromSystem(std::uint8_t* bytes, std::size_t count);

    int descriptor; // -1 once moved from
    Ownership ownership;
    bool atEnd = false;
    std::vector<std::uint8_t> buffer;
    std::size_t next = 0;   // first byte in `buffer` that was not taken yet
    std::size_t filled = 0; // end of the bytes in `buffer`
};

} // namespace gif89
