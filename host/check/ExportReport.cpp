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

void Append(std::string& list, const std::string& part) {
    list += (list.empty() ? "" : "; ") + part;
}

std::string ErrorText(const ExportReport& report) {
    return "largest error " + std::to_string(report.largestError) + ", mean " +
           Decimals(report.meanError);
}

std::string ProfileText(const InputNotes& notes) {
    return notes.profileName.empty() ? "colour profile" : "profile \"" + notes.profileName + "\"";
}

std::string Describe(const Loss& loss, const ExportReport& report) {
    switch (loss.kind) {
    case Loss::Kind::pictures:
        return "only the first of " + Count(loss.count) + " pictures kept";
    case Loss::Kind::samples:
        return Counted(loss.count, "sample") + " of each pixel left out";
    case Loss::Kind::bits:
        return Count(loss.count) + " bits rounded to 8";
    case Loss::Kind::inks:
        return "CMYK turned to RGB";
    case Loss::Kind::converted:
        return ProfileText(report.notes) + " converted to sRGB";
    case Loss::Kind::unusable:
        return ProfileText(report.notes) + " not usable, ignored";
    case Loss::Kind::colors:
        return Counted(loss.count, "colour") + " became " + std::to_string(report.shownColors) +
               " (" + ErrorText(report) + ")";
    case Loss::Kind::opacities:
        return Counted(loss.count, "partly opaque pixel") + " (" +
               Counted(report.alphaLevels, "level") + " of opacity) became opaque or transparent";
    case Loss::Kind::transparent:
        return Counted(loss.count, "visible pixel") + " became transparent";
    case Loss::Kind::opaque:
        return Counted(loss.count, "transparent pixel") + " became visible";
    case Loss::Kind::comment:
        return "the comment was left out";
    }
    return {};
}

std::string LossesBetween(const ExportReport& report, Loss::Kind first, Loss::Kind last) {
    std::string text;
    for (const Loss& loss : report.Losses())
        if (loss.kind >= first && loss.kind <= last) Append(text, Describe(loss, report));
    return text;
}

std::string WayText(const ExportReport& report) {
    switch (report.way) {
    case Way::ownTable:
        return "indexed, the picture's own table";
    case Way::fewColors:
        return "indexed, a table made of the picture's colours";
    case Way::reduced:
        return "reduced to " + Counted(report.shownColors, "colour");
    case Way::module:
        break;
    }
    return std::string("RGB, ") + NameOf(report.palette) + " palette, error diffusion";
}

std::string FileText(const ExportReport& report) {
    std::string text = Counted(static_cast<std::int64_t>(report.bytes), "byte") + ", " +
                       std::to_string(report.usedEntries) + " of " +
                       std::to_string(report.tableEntries) + " entries used, " +
                       (report.interlaced ? "interlaced" : "not interlaced");
    if (report.transparentIndex >= 0)
        text += ", entry " + std::to_string(report.transparentIndex) + " transparent";
    return text;
}

std::string PixelsText(const ExportReport& report) {
    if (report.KeepsPixels()) return "all " + Count(report.pixels) + " as they were";
    return Count(report.changedPixels) + " of " + Count(report.pixels) + " changed" +
           (report.largestError > 0 ? "; " + ErrorText(report) : "");
}

const char* FateText(CommentFate fate) {
    constexpr const char* kTexts[] = {"", "kept", "dropped"};
    return kTexts[static_cast<int>(fate)];
}

} // namespace

std::vector<Loss> ExportReport::Losses() const {
    using enum InputNotes::ProfileUse;
    const struct {
        bool happened;
        Loss loss;
    } possible[] = {
        {notes.pictures > 1, {Loss::Kind::pictures, notes.pictures}},
        {notes.droppedSamples > 0, {Loss::Kind::samples, notes.droppedSamples}},
        {notes.rounded, {Loss::Kind::bits, notes.bits}},
        {notes.inks, {Loss::Kind::inks}},
        {notes.profileUse == converted, {Loss::Kind::converted}},
        {notes.profileUse == unusable, {Loss::Kind::unusable}},
        {largestError > 0, {Loss::Kind::colors, sourceColors}},
        {partlyOpaque > 0, {Loss::Kind::opacities, partlyOpaque}},
        {madeTransparent > 0, {Loss::Kind::transparent, madeTransparent}},
        {madeOpaque > 0, {Loss::Kind::opaque, madeOpaque}},
        {comment == CommentFate::dropped, {Loss::Kind::comment}},
    };
    std::vector<Loss> losses;
    for (const auto& each : possible)
        if (each.happened) losses.push_back(each.loss);
    return losses;
}

std::vector<ReportLine> ReportLines(const ExportReport& report) {
    std::string reading = LossesBetween(report, Loss::Kind::pictures, Loss::Kind::unusable);
    if (report.notes.oriented) Append(reading, "turned upright");
    const ReportLine possible[] = {
        {"picture", std::to_string(report.columns) + " x " + std::to_string(report.rows) + ", " +
                        report.notes.format + ", " + Counted(report.sourceColors, "colour")},
        {"reading", reading},
        {"way", WayText(report)},
        {"file", FileText(report)},
        {"pixels", PixelsText(report)},
        {"transparency", LossesBetween(report, Loss::Kind::opacities, Loss::Kind::opaque)},
        {"comment", FateText(report.comment)},
        {"lossless", report.Lossless() ? "yes" : "no"},
    };
    std::vector<ReportLine> lines;
    for (const ReportLine& line : possible)
        if (!line.text.empty()) lines.push_back(line);
    return lines;
}

const char* NameOf(PaletteKind palette) {
    constexpr const char* kNames[] = {"",       "exact", "adaptive", "fixed",
                                      "loaded", "best",  "web",      "grey"};
    return kNames[static_cast<int>(palette)];
}

std::string LossText(const ExportReport& report) {
    return LossesBetween(report, Loss::Kind::pictures, Loss::Kind::comment);
}

} // namespace gif89
