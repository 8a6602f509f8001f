// One limit on the memory that the texts and profiles of a picture file may take.
#pragma once

#include "Problem.h"

#include <cstddef>

namespace gif89 {

/// Counts the bytes of memory that a reader takes for the texts and profiles of one file, copies by
/// a library included. Compressed, they may be only a few bytes of the file.
class MetadataAllowance {
  public:
    static constexpr std::size_t kMegabytes = 32;

    /// Throws Problem when the limit is exceeded.
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
