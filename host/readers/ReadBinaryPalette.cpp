#include "ReadBinaryPalette.h"

#include "PaletteBytes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>
#include <string_view>

namespace gif89 {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint64_t kWholeWord = 65535;
constexpr std::size_t kTableBytes = 768, kTableWithCountBytes = 772;

std::string_view TextOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The level of a share of `whole`, rounded to the nearest.
std::uint8_t Level(std::uint64_t share, std::uint64_t whole) {
    return static_cast<std::uint8_t>((share * 255 + whole / 2) / whole);
}

/// Of the shares of light that cyan, magenta, yellow and black let pass.
Color ColorOfInks(const std::uint64_t (&passed)[4], std::uint64_t whole) {
    const auto level = [&](int ink) { return Level(passed[ink] * passed[3], whole * whole); };
    return {level(0), level(1), level(2)};
}

constexpr unsigned kWholeFraction = 1 << 16;

/// The share of kWholeFraction that a stored fraction means. Those outside of 0 to 1 are brought
/// back to the nearer end.
unsigned TakeFraction(PaletteBytes& file) {
    const float fraction = std::bit_cast<float>(file.Long("a swatch"));
    if (!(fraction > 0)) return 0; // for what is no number, too
    return static_cast<unsigned>(std::lround(std::min(fraction, 1.0F) * kWholeFraction));
}

Color TakeExchangeColor(PaletteBytes& file, const GrowingPalette& palette) {
    const std::string_view model = TextOf(file.Take(4, "a swatch"));
    if (model == "RGB ") {
        std::uint8_t levels[3];
        for (std::uint8_t& level : levels) level = Level(TakeFraction(file), kWholeFraction);
        return {levels[0], levels[1], levels[2]};
    }
    if (model == "Gray") {
        const std::uint8_t level = Level(TakeFraction(file), kWholeFraction);
        return {level, level, level};
    }
    if (model == "CMYK") {
        std::uint64_t passed[4];
        for (std::uint64_t& each : passed) each = kWholeFraction - TakeFraction(file);
        return ColorOfInks(passed, kWholeFraction);
    }
    palette.Fail("swatch " + std::to_string(palette.Size() + 1) + " is in " +
                 (model == "LAB " ? "Lab" : "an unknown colour model") +
                 "; RGB, grey or CMYK is expected");
}

/// @param hue in 65536ths of the circle from red over green to blue; the others in 65535ths
Color ColorOfHue(std::uint64_t hue, std::uint64_t saturation, std::uint64_t brightness) {
    constexpr std::uint64_t kSixth = 65536;
    const std::uint64_t sector = hue * 6 / kSixth, within = hue * 6 % kSixth;
    const auto level = [&](std::uint64_t strength) { // of the saturation, in kSixth
        return Level(brightness * (kWholeWord * kSixth - saturation * strength),
                     kWholeWord * kWholeWord * kSixth);
    };
    const std::uint8_t full = level(0), none = level(kSixth), falling = level(within),
                       rising = level(kSixth - within);
    const Color sectors[] = {{full, rising, none},  {falling, full, none}, {none, full, rising},
                             {none, falling, full}, {rising, none, full},  {full, none, falling}};
    return sectors[sector];
}

Color TakeSwatch(PaletteBytes& file, const GrowingPalette& palette) {
    const unsigned space = file.Word("a swatch");
    std::uint64_t words[4];
    for (std::uint64_t& word : words) word = file.Word("a swatch");
    switch (space) {
    case 0:
        return {Level(words[0], kWholeWord), Level(words[1], kWholeWord),
                Level(words[2], kWholeWord)};
    case 1:
        return ColorOfHue(words[0], words[1], words[2]);
    case 2: // 0 is all of an ink
        return ColorOfInks(words, kWholeWord);
    default:
        palette.Fail("swatch " + std::to_string(palette.Size() + 1) + " is in colour space " +
                     std::to_string(space) + "; 0 (RGB), 1 (HSB) or 2 (CMYK) is expected");
    }
}

} // namespace

Palette ReadSwatchExchange(Bytes bytes) {
    constexpr unsigned kColorBlock = 1;
    GrowingPalette palette("an ASE swatch file");
    PaletteBytes file(bytes, palette);
    file.Take(8, "its header"); // "ASEF", version
    for (std::uint32_t blocks = file.Long("its header"); blocks > 0; --blocks) {
        const unsigned type = file.Word("a block");
        const std::uint32_t length = file.Long("a block");
        PaletteBytes block = file.TakePart(length, "a block");
        if (type != kColorBlock) continue;
        block.Take(block.Word("a swatch") * std::size_t{2}, "the name of a swatch");
        palette.Add(TakeExchangeColor(block, palette));
    }
    return palette.Finish();
}

Palette ReadSwatches(Bytes bytes) {
    GrowingPalette palette("an ACO swatch file");
    PaletteBytes file(bytes, palette);
    const bool named = file.Word("its header") == 2; // version
    for (unsigned count = file.Word("its header"); count > 0; --count) {
        palette.Add(TakeSwatch(file, palette));
        if (!named) continue;
        const std::uint32_t characters = file.Long("the name of a swatch");
        file.Take(characters * std::size_t{2}, "the name of a swatch");
    }
    return palette.Finish();
}

bool HasColorTableSize(std::uintmax_t size) {
    return size == kTableBytes || size == kTableWithCountBytes;
}

Palette ReadColorTable(Bytes bytes) {
    GrowingPalette palette("an ACT colour table");
    if (!HasColorTableSize(bytes.size()))
        palette.Fail("it has " + std::to_string(bytes.size()) + " bytes; 768 or 772 are expected");
    unsigned count = kMostEntries;
    if (bytes.size() == kTableWithCountBytes)
        count = PaletteBytes(bytes.subspan(kTableBytes), palette).Word("its count");
    if (count > kMostEntries)
        palette.Fail("its count at byte 768 is " + std::to_string(count) +
                     "; 1 to 256 is expected");
    for (std::size_t i = 0; i < count; ++i)
        palette.Add({bytes[3 * i], bytes[3 * i + 1], bytes[3 * i + 2]});
    return palette.Finish();
}

Palette ReadRiffPalette(Bytes bytes) {
    GrowingPalette palette("a RIFF palette");
    PaletteBytes file(bytes, palette);
    file.Take(12, "its header"); // "RIFF", length, "PAL "
    while (TextOf(file.Take(4, "the search for its data")) != "data") {
        const std::uint32_t length = file.LongLE("a chunk");
        file.Take(length + std::size_t{length % 2}, "a chunk");
    }
    file.Take(6, "its data"); // length, palette version
    for (unsigned count = file.WordLE("its data"); count > 0; --count) {
        const Bytes entry = file.Take(4, "its colours"); // red, green, blue, flags
        palette.Add({entry[0], entry[1], entry[2]});
    }
    return palette.Finish();
}

} // namespace gif89
