#include "ExportReport.h"

#include <cstdio>

namespace gif89 {
namespace {

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
