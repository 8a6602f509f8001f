#include "InputFile.h"

#include "FolderTable.h"
#include "Streams.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace gif89 {

namespace {

constexpr std::size_t kBufferBytes = 65536;

InputProblem SystemProblem(const char* what) {
    return InputProblem(std::string(what) + ": " + SystemReason());
}

} // namespace

InputFile InputFile::Open(const std::string& path) {
    // Opened through its folder, because the whole path may be longer than the system accepts.
    const std::size_t slash = path.rfind('/');
    const Descriptor folder =
        OpenFolder(slash == std::string::npos ? "." : path.substr(0, slash + 1));
    if (!folder.IsOpen()) throw SystemProblem("cannot be opened");
    const std::string name = slash + 1 == path.size() ? "." : path.substr(slash + 1);
    const int descriptor = openat(folder.Get(), name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) throw SystemProblem("cannot be opened");
    InputFile file(descriptor, Ownership::owned);
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) throw SystemProblem("cannot be opened");
    if (S_ISDIR(status.st_mode)) throw Problem("is a folder, not a picture");
    return file;
}

InputFile InputFile::StandardInput() {
    return {STDIN_FILENO, Ownership::borrowed};
}

InputFile::InputFile(int fileDescriptor, Ownership fileOwnership)
    : descriptor(fileDescriptor), ownership(fileOwnership), buffer(kBufferBytes) {}

InputFile::InputFile(InputFile&& other) noexcept
    : descriptor(std::exchange(other.descriptor, -1)), ownership(other.ownership),
      atEnd(other.atEnd), buffer(std::move(other.buffer)), next(other.next), filled(other.filled) {}

InputFile::~InputFile() {
    if (descriptor >= 0 && ownership == Ownership::owned) close(descriptor);
}

std::span<const std::uint8_t> InputFile::Peek() {
    while (filled - next < kPeekBytes && Fill()) {
    }
    return {buffer.data() + next, std::min(filled - next, kPeekBytes)};
}

std::size_t InputFile::Read(std::uint8_t* bytes, std::size_t count) {
    std::size_t done = 0;
    while (done < count) {
        const std::size_t wanted = count - done;
        if (next == filled && wanted >= buffer.size()) { // read without the buffer
            const std::size_t got = ReadFromSystem(bytes + done, wanted);
            if (got == 0) break;
            done += got;
            continue;
        }
        if (next == filled && !Fill()) break;
        const std::size_t held = std::min(wanted, filled - next);
        std::memcpy(bytes + done, buffer.data() + next, held);
        next += held;
        done += held;
    }
    return done;
}

int InputFile::ReadByte() {
    if (next == filled && !Fill()) return -1;
    return buffer[next++];
}

std::span<const std::uint8_t> InputFile::ReadAvailable() {
    if (next == filled && !Fill()) return {};
    const std::span<const std::uint8_t> available(buffer.data() + next, filled - next);
    next = filled;
    return available;
}

std::vector<std::uint8_t> InputFile::ReadRest(std::size_t mostBytes) {
    std::vector<std::uint8_t> bytes;
    try {
        // The size of the file only saves copies: a pipe has none, and a file may grow meanwhile.
        struct stat status = {};
        if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
            bytes.reserve(std::min(static_cast<std::size_t>(status.st_size), mostBytes));
        for (auto more = ReadAvailable(); !more.empty(); more = ReadAvailable()) {
            if (more.size() > mostBytes - bytes.size())
                throw Problem("has more than " + std::to_string(mostBytes >> 20) + " megabytes");
            bytes.insert(bytes.end(), more.begin(), more.end());
        }
    } catch (const std::bad_alloc&) {
        throw Problem("cannot be read: there is not enough memory for the file");
    }
    return bytes;
}

// Appends what one system call reads to the buffer. Returns false at the end of the file.
bool InputFile::Fill() {
    std::memmove(buffer.data(), buffer.data() + next, filled - next);
    filled -= next;
    next = 0;
    const std::size_t got = ReadFromSystem(buffer.data() + filled, buffer.size() - filled);
    filled += got;
    return got > 0;
}

std::size_t InputFile::ReadFromSystem(std::uint8_t* bytes, std::size_t count) {
    if (atEnd) return 0; // reading again from a terminal would wait for more input
    const ssize_t got = ReadSome(descriptor, bytes, count);
    if (got < 0) throw SystemProblem("cannot be read");
    atEnd = got == 0;
    return static_cast<std::size_t>(got);
}

} // namespace gif89
