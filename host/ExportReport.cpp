#include "ExportReport.h"

#include <algorithm>
#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <set>
#include <utility>
#include <vector>

namespace gif89 {
namespace {

struct FreeBlock {
    void operator()(std::uint64_t* block) const { std::free(block); }
};

/// Counts colours, one bit for each of the 2^24.
class ColorCounter {
  public:
    ColorCounter() {
        if (!seen) throw std::bad_alloc();
    }
    void Add(PackedColor color) {
        std::uint64_t& word = seen[color / 64];
        const std::uint64_t bit = std::uint64_t{1} << color % 64;
        if (word & bit) return; // as a rule; a store each time would make the next load wait for it
        word |= bit;
        ++count;
    }
    std::int64_t Count() const { return count; }

  private:
    // Comes cleared from the system, page by page as it is touched; small pictures touch little.
    std::unique_ptr<std::uint64_t[], FreeBlock> seen{
        static_cast<std::uint64_t*>(std::calloc((1U << 24) / 64, sizeof(std::uint64_t)))};
    std::int64_t count = 0;
};

/// A pixel of the picture that was read, or of the file.
struct Pixel {
    int red, green, blue;
    int opacity;

    PackedColor Color() const { return PackedColor(red << 16 | green << 8 | blue); }
};

/// Sums over the pixels of one comparison.
class Comparison {
  public:
    explicit Comparison(const DecodedGif& file) : gif(file) {
        for (int index = 0; index < 256; ++index) {
            const RGBtuple entry = TableEntry(gif.table, index);
            shown[index] = {entry.red, entry.green, entry.blue,
                            index == gif.transparentIndex ? 0 : 255};
        }
    }

    void Run(const Picture& original);
    ExportReport Finish();

  private:
    void RunIndexed(const Picture& original);
    void RunOpaque(const Picture& original);
    template <typename Fetch> void RunAny(Fetch fetch);
    void Add(const Pixel& was, int index, std::int64_t times);
    std::size_t PixelCount() const {
        return static_cast<std::size_t>(gif.rows) * static_cast<std::size_t>(gif.columns);
    }

    const DecodedGif& gif;
    ExportReport report;
    ColorCounter colors;
    Pixel shown[256]; ///< entries of the file; opacity 0 or 255
    bool used[256] = {};
    std::bitset<256> levels;
    std::int64_t compared = 0, errorSum = 0;
};

void Comparison::Run(const Picture& original) {
    const std::uint8_t* const pixels = original.pixels.get();
    const std::uint8_t* const opacity = OpacityOf(original);
    const RGBLookUpTable& table = original.table;
    if (original.kind == Picture::Kind::indexed && !opacity) return RunIndexed(original);
    if (original.kind == Picture::Kind::rgb && gif.transparentIndex < 0) return RunOpaque(original);
    if (original.kind == Picture::Kind::indexed)
        return RunAny([&table, pixels, opacity](std::size_t n) {
            const RGBtuple color = TableEntry(table, pixels[n]);
            return Pixel{color.red, color.green, color.blue, opacity[n]};
        });
    const std::size_t step = static_cast<std::size_t>(original.BytesPerPixel());
    RunAny([pixels, step](std::size_t n) {
        const std::uint8_t* const pixel = pixels + n * step;
        return Pixel{pixel[0], pixel[1], pixel[2], step == 4 ? pixel[3] : 255};
    });
}

// Counts the pairs of indices, which are few, and looks at each kind of pair once.
void Comparison::RunIndexed(const Picture& original) {
    std::vector<std::int32_t> pairs(256 * 256);
    const std::size_t pixels = PixelCount();
    for (std::size_t n = 0; n < pixels; ++n)
        ++pairs[static_cast<std::size_t>(original.pixels[n] << 8 | gif.indices[n])];
    for (int pair = 0; pair < original.colors * 256; ++pair) {
        const std::int32_t times = pairs[static_cast<std::size_t>(pair)];
        if (times == 0) continue;
        const RGBtuple color = TableEntry(original.table, pair >> 8);
        Add({color.red, color.green, color.blue, 255}, pair & 255, times);
    }
}

// Photographs. A row of the file is laid out as the picture's is, so that the compiler can take
// many bytes at a time for the differences.
void Comparison::RunOpaque(const Picture& original) {
    const std::size_t columns = static_cast<std::size_t>(gif.columns), samples = columns * 3;
    std::vector<std::uint8_t> line(samples + 1); // each pixel is stored with the byte behind it
    PackedColor colorOf[256];
    std::uint8_t bytesOf[256][4] = {};
    for (int entry = 0; entry < 256; ++entry) {
        colorOf[entry] = shown[entry].Color();
        const RGBtuple color = TableEntry(gif.table, entry);
        bytesOf[entry][0] = color.red;
        bytesOf[entry][1] = color.green;
        bytesOf[entry][2] = color.blue;
    }
    const std::uint8_t* index = gif.indices.get();
    const std::uint8_t* row = original.pixels.get();
    PackedColor last = ~PackedColor{0}; // no colour
    int largest = 0;
    for (int y = 0; y < gif.rows; ++y, row += samples) {
        std::int64_t changed = 0;
        for (std::size_t x = 0; x < columns; ++x, ++index) {
            const std::uint8_t* const was = row + x * 3;
            const PackedColor color = PackRGB(was[0], was[1], was[2]);
            std::memcpy(line.data() + x * 3, bytesOf[*index], 4);
            used[*index] = true;
            changed += color != colorOf[*index];
            if (color != last) colors.Add(last = color);
        }
        report.changedPixels += changed;
        std::int32_t rowSum = 0; // at most 32767 x 3 x 255
        for (std::size_t n = 0; n < samples; ++n) {
            const int error = std::abs(row[n] - line[n]);
            rowSum += error;
            largest = std::max(largest, error);
        }
        errorSum += rowSum;
    }
    report.largestError = largest;
    compared = static_cast<std::int64_t>(PixelCount());
}

template <typename Fetch> void Comparison::RunAny(Fetch fetch) {
    const std::size_t pixels = PixelCount();
    for (std::size_t n = 0; n < pixels; ++n) Add(fetch(n), gif.indices[n], 1);
}

void Comparison::Add(const Pixel& was, int index, std::int64_t times) {
    const Pixel& is = shown[index];
    used[index] = true;
    if (was.opacity > 0) colors.Add(was.Color());
    if (was.opacity == 255 && is.opacity == 255) {
        const int red = std::abs(was.red - is.red), green = std::abs(was.green - is.green),
                  blue = std::abs(was.blue - is.blue);
        const int sum = red + green + blue;
        compared += times;
        errorSum += sum * times;
        if (sum > 0) report.changedPixels += times;
        report.largestError = std::max({report.largestError, red, green, blue});
        return;
    }
    const bool hidden = is.opacity == 0;
    if (was.opacity == 0 && hidden) return;
    report.changedPixels += times;
    if (hidden) report.madeTransparent += times;
    if (was.opacity == 0) report.madeOpaque += times;
    if (was.opacity == 0 || was.opacity == 255) return;
    report.partlyOpaque += times;
    levels.set(static_cast<std::size_t>(was.opacity));
}

ExportReport Comparison::Finish() {
    std::set<PackedColor> visible;
    for (int index = 0; index < 256; ++index) {
        report.usedEntries += used[index];
        if (used[index] && shown[index].opacity > 0) visible.insert(shown[index].Color());
    }
    report.shownColors = static_cast<int>(visible.size());
    report.sourceColors = colors.Count();
    report.alphaLevels = static_cast<int>(levels.count());
    if (compared > 0)
        report.meanError = static_cast<double>(errorSum) / (3.0 * static_cast<double>(compared));
    return std::move(report);
}

// Counts in groups of three digits.
std::string Count(std::int64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3) text.insert(place - 3, 1, ',');
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
    comparison.Run(original);
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
