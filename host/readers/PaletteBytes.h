// The bytes of a palette file, taken one field after another.
#pragma once

#include "Color.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace gif89 {

/// A palette of one format as it grows out of a file. Add throws Problem for one entry too many,
/// and Finish for none at all.
class GrowingPalette {
  public:
    /// @param formatName with its article, as it stands in sentences: "a GIMP palette"
    explicit GrowingPalette(const char* formatName) : format(formatName) {}

    void Add(const Color& color);
    std::size_t Size() const { return palette.size(); }
    Palette Finish();

    /// Throws Problem: the file cannot be read as this format, and why.
    [[noreturn]] void Fail(const std::string& what) const;

  private:
    const char* format;
    Palette palette;
};

/// Fields of fixed size in order. Every member throws Problem, which names the place, when the file
/// ends too early.
class PaletteBytes {
  public:
    /// @param file   must outlive this object
    /// @param target is told of damage
    PaletteBytes(std::span<const std::uint8_t> file, const GrowingPalette& target)
        : bytes(file), palette(target) {}

    /// The next `count` bytes, taken from here, to be read on their own.
    PaletteBytes TakePart(std::size_t count, const char* what);

    /// @param what the field, for the sentence: "the name of a swatch"
    std::span<const std::uint8_t> Take(std::size_t count, const char* what);
    unsigned Word(const char* what);   ///< 16 bits, most significant byte first
    unsigned WordLE(const char* what); ///< 16 bits, least significant byte first
    std::uint32_t Long(const char* what);
    std::uint32_t LongLE(const char* what);

  private:
    std::span<const std::uint8_t> bytes; // from the start of the file
    const GrowingPalette& palette;
    std::size_t position = 0;
};

} // namespace gif89
