// Squares of thresholds for patterned dithering. Internal to this folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gif89 {

/// A square that repeats over the picture.
class Thresholds {
  public:
    static constexpr int kLevels = 4096; ///< a threshold is 0..kLevels - 1

    /// Bayer's matrix of 8 x 8. Source: B. E. Bayer, "An Optimum Method for Two-Level Rendition of
    /// Continuous-Tone Pictures", IEEE International Conference on Communications, 1973.
    static Thresholds Ordered();
    /// A square of 64 x 64 without low frequencies: each threshold lies where it is farthest from
    /// those below it. Source: R. Ulichney, "The Void-and-Cluster Method for Dither Array
    /// Generation", SPIE 1913, 1993. Takes some milliseconds.
    static Thresholds BlueNoise();

    int At(int y, int x) const {
        return values[static_cast<std::size_t>((y & (side - 1)) * side + (x & (side - 1)))];
    }

  private:
    explicit Thresholds(int theSide)
        : side(theSide),
          values(static_cast<std::size_t>(theSide) * static_cast<std::size_t>(theSide)) {}

    int side; ///< a power of two
    std::vector<std::uint16_t> values;
};

} // namespace gif89
