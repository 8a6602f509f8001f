#include "Palette.h"

#include "StatementReader.h"

#include <array>
#include <optional>

namespace gif89 {

namespace {

using Color = std::array<std::uint8_t, 3>;
using Colors = std::vector<Color>;

std::uint8_t ReadLevel(Scanner& scanner) {
    return static_cast<std::uint8_t>(scanner.TakeNumber("a level", 0, 255));
}

std::vector<std::uint8_t> ReadLevels(Scanner& scanner) {
    std::vector<std::uint8_t> levels = {ReadLevel(scanner)};
    while (scanner.NextIsNumber()) levels.push_back(ReadLevel(scanner));
    return levels;
}

Color ReadColor(Scanner& scanner) {
    Color color;
    for (std::uint8_t& channel : color) channel = ReadLevel(scanner);
    return color;
}

void ReadCube(Scanner& scanner, Colors& colors) {
    const std::vector<std::uint8_t> levels = ReadLevels(scanner);
    std::optional<Color> without;
    if (scanner.TakeIf("without")) without = ReadColor(scanner);
    for (const std::uint8_t red : levels)
        for (const std::uint8_t green : levels)
            for (const std::uint8_t blue : levels)
                if (const Color color = {red, green, blue}; color != without)
                    colors.push_back(color);
}

constexpr struct {
    const char* word;
    std::uint8_t red, green, blue; ///< 1 where the ramp rises
} kRamps[] = {{"red", 1, 0, 0}, {"green", 0, 1, 0}, {"blue", 0, 0, 1}, {"grey", 1, 1, 1}};

void ReadRamp(Scanner& scanner, Colors& colors) {
    for (const auto& ramp : kRamps) {
        if (!scanner.TakeIf(ramp.word)) continue;
        const auto scaled = [](int level, int factor) {
            return static_cast<std::uint8_t>(level * factor);
        };
        for (const int level : ReadLevels(scanner))
            colors.push_back(
                {scaled(level, ramp.red), scaled(level, ramp.green), scaled(level, ramp.blue)});
        return;
    }
    scanner.Refuse(OneOf(kRamps));
}

void ReadEntry(Scanner& scanner, Colors& colors) {
    colors.push_back(ReadColor(scanner));
}

constexpr struct {
    const char* word;
    void (*read)(Scanner& scanner, Colors& colors);
} kRules[] = {{"cube", ReadCube}, {"ramp", ReadRamp}, {"color", ReadEntry}};

void ReadRule(Scanner& scanner, Colors& colors) {
    for (const auto& rule : kRules)
        if (scanner.TakeIf(rule.word)) return rule.read(scanner, colors);
    scanner.Refuse(OneOf(kRules) + " or '}'");
}

} // namespace

Bytes ReadPaletteRules(Scanner& scanner, const Place& place) {
    constexpr std::size_t kEntries = 256;
    Colors colors;
    scanner.Expect("{");
    while (!scanner.TakeIf("}")) ReadRule(scanner, colors);
    if (colors.size() != kEntries)
        throw SourceError(place, "the palette has " + std::to_string(colors.size()) +
                                     " entries, expected 256");
    Bytes planes;
    for (std::size_t channel = 0; channel < 3; ++channel)
        for (const Color& color : colors) PutByte(planes, color[channel]);
    return planes;
}

} // namespace gif89
