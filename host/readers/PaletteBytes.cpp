#include "PaletteBytes.h"

#include "Problem.h"

#include <utility>

namespace gif89 {

void GrowingPalette::Add(const Color& color) {
    if (palette.size() == kMostEntries)
        throw Problem("is " + std::string(format) +
                      " of more than 256 colours; 1 to 256 are expected");
    palette.push_back(color);
}

Palette GrowingPalette::Finish() {
    if (palette.empty())
        throw Problem("is " + std::string(format) + " without a colour; 1 to 256 are expected");
    return std::move(palette);
}

void GrowingPalette::Fail(const std::string& what) const {
    throw Problem("cannot be read as " + std::string(format) + ": " + what);
}

std::span<const std::uint8_t> PaletteBytes::Take(std::size_t count, const char* what) {
    if (count > bytes.size() - position)
        palette.Fail("it ends at byte " + std::to_string(bytes.size()) + " within " + what);
    const auto taken = bytes.subspan(position, count);
    position += count;
    return taken;
}

PaletteBytes PaletteBytes::TakePart(std::size_t count, const char* what) {
    PaletteBytes part(bytes, palette);
    part.position = position;
    Take(count, what);
    part.bytes = bytes.first(position);
    return part;
}

unsigned PaletteBytes::Word(const char* what) {
    const auto taken = Take(2, what);
    return static_cast<unsigned>(taken[0] << 8 | taken[1]);
}

unsigned PaletteBytes::WordLE(const char* what) {
    const auto taken = Take(2, what);
    return static_cast<unsigned>(taken[1] << 8 | taken[0]);
}

std::uint32_t PaletteBytes::Long(const char* what) {
    const unsigned high = Word(what);
    return high << 16 | Word(what);
}

std::uint32_t PaletteBytes::LongLE(const char* what) {
    const unsigned low = WordLE(what);
    return WordLE(what) << 16 | low;
}

} // namespace gif89
