#include "WritePalette.h"

#include <algorithm>
#include <cstdio>

namespace gif89 {
namespace {

/// One line for each entry.
std::string Lines(const Palette& palette, const char* format) {
    std::string lines;
    for (const Color& color : palette) {
        char line[20];
        std::snprintf(line, sizeof line, format, color.red, color.green, color.blue);
        lines += line;
    }
    return lines;
}

std::string GimpText(const Palette& palette, std::string name) {
    std::erase_if(name, [](char c) { return c == '\n' || c == '\r'; });
    return "GIMP Palette\nName: " + name + "\n#\n" + Lines(palette, "%3d %3d %3d\n");
}

std::string ColorTable(const Palette& palette) {
    constexpr std::size_t kEntryBytes = 768;
    std::string bytes;
    for (const Color& color : palette)
        for (const std::uint8_t level : {color.red, color.green, color.blue})
            bytes += static_cast<char>(level);
    bytes.resize(kEntryBytes);
    bytes += static_cast<char>(palette.size() >> 8);
    bytes += static_cast<char>(palette.size());
    return bytes + "\xFF\xFF"; // no transparent entry
}

} // namespace

std::string PaletteText(PaletteFormat format, const Palette& palette, const std::string& name) {
    switch (format) {
    case PaletteFormat::gpl:
        return GimpText(palette, name);
    case PaletteFormat::hex:
        return Lines(palette, "%02x%02x%02x\n");
    case PaletteFormat::jasc:
        return "JASC-PAL\r\n0100\r\n" + std::to_string(palette.size()) + "\r\n" +
               Lines(palette, "%d %d %d\r\n");
    case PaletteFormat::act:
        return ColorTable(palette);
    }
    return {};
}

} // namespace gif89
