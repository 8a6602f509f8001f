// A file without a place on a disk.
#pragma once

#include "Descriptor.h"
#include "Require.h"

#include <cstdint>
#include <span>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

class MemoryFile {
  public:
    MemoryFile() : file(memfd_create("fuzz", MFD_CLOEXEC)) {
        Require(file.IsOpen(), "there is memory for a file");
    }
    explicit MemoryFile(std::span<const std::uint8_t> bytes) : MemoryFile() { SetBytes(bytes); }

    int FileDescriptor() const { return file.Get(); }
    /// Leads to the file as long as this object lives.
    std::string Path() const { return "/proc/self/fd/" + std::to_string(file.Get()); }

    void SetBytes(std::span<const std::uint8_t> bytes) {
        const auto size = static_cast<off_t>(bytes.size());
        Require(ftruncate(file.Get(), size) == 0 &&
                    pwrite(file.Get(), bytes.data(), bytes.size(), 0) == size,
                "a file in memory can be written");
    }
    std::vector<std::uint8_t> Bytes() const {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(lseek(file.Get(), 0, SEEK_END)));
        const auto size = static_cast<ssize_t>(bytes.size());
        Require(pread(file.Get(), bytes.data(), bytes.size(), 0) == size,
                "a file in memory can be read");
        return bytes;
    }

  private:
    Descriptor file;
};
