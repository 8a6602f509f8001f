#include "ExportReport.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <utility>
#include <vector>

namespace gif89 {
namespace {

/// Counts colours, one bit for each of the 2^24.
class ColorCounter {
  public:
    void Add(PackedColor color) {
        if (color == last) return;
        last = color;
        std::uint64_t& word = seen[color / 64];
        const std::uint64_t bit = std::uint64_t{1} << color % 64;
        count += (word & bit) == 0;
        word |= bit;
    }
    std::int64_t Count() const { return count; }

  private:
    std::vector<std::uint64_t> seen = std::vector<std::uint64_t>((1U << 24) / 64);
    PackedColor last = ~PackedColor{0};
    std::int64_t count = 0;
};

/// Sums over the pixels of one comparison.
class Comparison {
  public:
    explicit Comparison(const DecodedGif& file) : gif(file) {}

    void AddPixel(RGBtuple color, int opacity, std::uint8_t index) {
        const bool hidden = index == gif.transparentIndex;
        used.set(index);
        if (opacity > 0) colors.Add(PackColor(color));
        if (opacity == 255 && !hidden) {
            AddOpaque(color, TableEntry(gif.table, index));
            return;
        }
        report.madeTransparent += opacity > 0 && hidden;
        report.madeOpaque += opacity == 0 && !hidden;
        report.changedPixels += opacity > 0 || !hidden;
        if (opacity > 0 && opacity < 255) {
            ++report.partlyOpaque;
            levels.set(static_cast<std::size_t>(opacity));
        }
    }

    ExportReport Finish() {
        report.usedEntries = static_cast<int>(used.count());
        report.shownColors = CountShownColors();
        report.sourceColors = colors.Count();
        report.alphaLevels = static_cast<int>(levels.count());
        if (compared > 0)
            report.meanError = static_cast<double>(errors) / (3.0 * static_cast<double>(compared));
        return std::move(report);
    }

  private:
    int CountShownColors() const {
        std::set<PackedColor> shown;
        for (int index = 0; index < gif.colors; ++index)
            if (used[static_cast<std::size_t>(index)] && index != gif.transparentIndex)
                shown.insert(PackColor(TableEntry(gif.table, index)));
        return static_cast<int>(shown.size());
    }

    void AddOpaque(RGBtuple was, RGBtuple is) {
        const int red = std::abs(was.red - is.red), green = std::abs(was.green - is.green),
                  blue = std::abs(was.blue - is.blue);
        const int sum = red + green + blue;
        ++compared;
        errors += sum;
        report.changedPixels += sum != 0;
        report.largestError = std::max({report.largestError, red, green, blue});
    }

    const DecodedGif& gif;
    ExportReport report;
    ColorCounter colors;
    std::bitset<256> used, levels;
    std::int64_t compared = 0, errors = 0;
};

void ComparePixels(const Picture& original, const DecodedGif& gif, Comparison& comparison) {
    const std::size_t pixels =
        static_cast<std::size_t>(gif.rows) * static_cast<std::size_t>(gif.columns);
    const std::uint8_t* const indices = gif.indices.get();
    const std::uint8_t* pixel = original.pixels.get();
    if (original.kind == Picture::Kind::indexed) {
        const std::uint8_t* const opacity = OpacityOf(original);
        for (std::size_t n = 0; n < pixels; ++n)
            comparison.AddPixel(TableEntry(original.table, pixel[n]), opacity ? opacity[n] : 255,
                                indices[n]);
        return;
    }
    const bool alpha = original.kind == Picture::Kind::rgbAlpha;
    for (std::size_t n = 0; n < pixels; ++n, pixel += alpha ? 4 : 3)
        comparison.AddPixel({0, pixel[0], pixel[1], pixel[2]}, alpha ? pixel[3] : 255, indices[n]);
}

// Counts in groups of three digits.
std::string Count(std::int64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3) text.insert(place - 3, ",");
    return text;
}

std::string Counted(std::int64_t number, const std::string& noun) {
    return Count(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string Decimals(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

void Append(std::string& list, const std::string& part, const char* separator) {
    if (!part.empty()) list += (list.empty() ? "" : separator) + part;
}

// What came between the input file and the picture, as far as it changed anything.
std::string ReadingText(const InputNotes& notes) {
    using enum InputNotes::ProfileUse;
    const std::string profile =
        notes.profileName.empty() ? "colour profile" : "profile \"" + notes.profileName + "\"";
    std::string text;
    if (notes.rounded) Append(text, std::to_string(notes.bits) + " bits rounded to 8", ", ");
    if (notes.profileUse == converted) Append(text, profile + " converted to sRGB", ", ");
    if (notes.profileUse == unusable) Append(text, profile + " not usable, ignored", ", ");
    if (notes.inks && notes.profileUse != converted)
        Append(text, "inks turned to RGB without a profile", ", ");
    if (notes.oriented) Append(text, "turned upright", ", ");
    if (notes.pictures > 1)
        Append(text, "the first of " + std::to_string(notes.pictures) + " pictures", ", ");
    return text;
}

std::string WayText(const ExportReport& report) {
    if (report.indexed)
        return report.palette == "own" ? "indexed, the picture's own table"
                                       : "indexed, a table made of the picture's colours";
    return "RGB, " + report.palette + " palette, error diffusion";
}

std::string TransparencyText(const ExportReport& report) {
    std::string text;
    if (report.partlyOpaque > 0)
        text = Counted(report.partlyOpaque, "partly opaque pixel") + " (" +
               Counted(report.alphaLevels, "level") + " of opacity) became opaque or transparent";
    if (report.madeTransparent > 0)
        Append(text, Counted(report.madeTransparent, "visible pixel") + " became transparent",
               "; ");
    if (report.madeOpaque > 0)
        Append(text, Counted(report.madeOpaque, "transparent pixel") + " became visible", "; ");
    return text;
}

std::string ErrorText(const ExportReport& report) {
    return "largest error " + std::to_string(report.largestError) + ", mean " +
           Decimals(report.meanError);
}

} // namespace

bool ExportReport::Lossless() const {
    using enum InputNotes::ProfileUse;
    return KeepsPixels() && !notes.rounded && !notes.inks && notes.pictures == 1 &&
           (notes.profileUse == none || notes.profileUse == same);
}

ExportReport MakeReport(const Picture& original, const Picture& exported, const DecodedGif& gif,
                        std::size_t bytes, std::string palette) {
    Comparison comparison(gif);
    ComparePixels(original, gif, comparison);
    ExportReport report = comparison.Finish();
    report.rows = gif.rows;
    report.columns = gif.columns;
    report.pixels = std::int64_t{gif.rows} * gif.columns;
    report.bytes = bytes;
    report.interlaced = gif.interlaced;
    report.transparentIndex = gif.transparentIndex;
    report.tableEntries = gif.colors;
    report.indexed = exported.kind == Picture::Kind::indexed;
    report.palette = std::move(palette);
    report.comment = gif.comment                ? CommentFate::kept
                     : exported.comment.empty() ? CommentFate::none
                                                : CommentFate::dropped;
    report.notes = original.notes;
    return report;
}

std::string ReportText(const ExportReport& report) {
    std::string text = "  picture:      " + std::to_string(report.columns) + " x " +
                       std::to_string(report.rows) + ", " + report.notes.format + ", " +
                       Counted(report.sourceColors, "colour") + "\n";
    const std::string reading = ReadingText(report.notes);
    if (!reading.empty()) text += "  reading:      " + reading + "\n";
    text += "  way:          " + WayText(report) + "\n";
    text += "  file:         " + Counted(static_cast<std::int64_t>(report.bytes), "byte") + ", " +
            std::to_string(report.usedEntries) + " of " + std::to_string(report.tableEntries) +
            " entries used, " + (report.interlaced ? "interlaced" : "not interlaced");
    if (report.transparentIndex >= 0)
        text += ", entry " + std::to_string(report.transparentIndex) + " transparent";
    text += "\n";
    text += "  pixels:       ";
    if (report.KeepsPixels())
        text += "all " + Count(report.pixels) + " as they were\n";
    else
        text += Count(report.changedPixels) + " of " + Count(report.pixels) + " changed" +
                (report.largestError > 0 ? "; " + ErrorText(report) : "") + "\n";
    const std::string transparency = TransparencyText(report);
    if (!transparency.empty()) text += "  transparency: " + transparency + "\n";
    if (report.comment != CommentFate::none)
        text += std::string("  comment:      ") +
                (report.comment == CommentFate::kept ? "kept" : "dropped") + "\n";
    text += std::string("  lossless:     ") + (report.Lossless() ? "yes" : "no") + "\n";
    return text;
}

std::string LossText(const ExportReport& report) {
    std::string text;
    if (report.largestError > 0)
        text = Counted(report.sourceColors, "colour") + " became " +
               std::to_string(report.shownColors) + " (" + ErrorText(report) + ")";
    Append(text, TransparencyText(report), "; ");
    if (report.comment == CommentFate::dropped) Append(text, "the comment was left out", "; ");
    return text;
}

} // namespace gif89
