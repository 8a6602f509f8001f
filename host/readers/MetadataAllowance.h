// One limit on what a picture file's texts and profiles may take in memory.
#pragma once

#include "Problem.h"

#include <cstddef>

namespace gif89 {

/// Counts the bytes that a reader takes for the texts and profiles of one file, copies that a
/// library makes of them included. A few bytes of a file can stand for many of these.
class MetadataAllowance {
  public:
    static constexpr std::size_t kMegabytes = 32;

    /// Throws Problem when the file has had its share.
    void Take(std::size_t bytes) {
        if (bytes > left)
            throw Problem("has more than " + std::to_string(kMegabytes) +
                          " megabytes of texts and profiles");
        left -= bytes;
    }

  private:
    std::size_t left = kMegabytes << 20;
};

} // namespace gif89
