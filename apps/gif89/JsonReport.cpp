#include "JsonReport.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace gif89 {
namespace {

using Json = nlohmann::ordered_json;

const char* NameOf(CommentFate fate) {
    constexpr const char* kNames[] = {"none", "kept", "dropped"};
    return kNames[static_cast<int>(fate)];
}

const char* NameOf(InputNotes::ProfileUse use) {
    constexpr const char* kNames[] = {"none", "same", "converted", "unusable"};
    return kNames[static_cast<int>(use)];
}

Json InputJson(const InputNotes& notes) {
    return {{"format", notes.format},
            {"bits", notes.bits},
            {"rounded", notes.rounded},
            {"inks", notes.inks},
            {"pictures", notes.pictures},
            {"dropped_samples", notes.droppedSamples},
            {"warnings", notes.warnings},
            {"profile", NameOf(notes.profileUse)},
            {"profile_name", notes.profileName},
            {"orientation", notes.orientation},
            {"turned_upright", notes.oriented}};
}

const char* PaletteName(const ExportReport& report) {
    if (report.way == Way::module || report.way == Way::reduced) return NameOf(report.palette);
    return report.way == Way::ownTable ? "own" : "found";
}

Json FileJson(const ExportReport& report) {
    return {{"bytes", report.bytes},
            {"path", report.way == Way::module ? "rgb" : "indexed"},
            {"palette", PaletteName(report)},
            {"table_entries", report.tableEntries},
            {"entries_used", report.usedEntries},
            {"colors_shown", report.shownColors},
            {"transparent_index",
             report.transparentIndex < 0 ? Json(nullptr) : Json(report.transparentIndex)},
            {"interlaced", report.interlaced},
            {"comment", NameOf(report.comment)}};
}

const char* NameOf(Loss::Kind kind) {
    constexpr const char* kNames[] = {"pictures",    "samples",  "bits",   "inks",
                                      "converted",   "unusable", "colors", "opacities",
                                      "transparent", "opaque",   "comment"};
    return kNames[static_cast<int>(kind)];
}

Json LossesJson(const ExportReport& report) {
    Json losses = Json::array();
    for (const Loss& loss : report.Losses())
        losses.push_back({{"kind", NameOf(loss.kind)}, {"count", loss.count}});
    return losses;
}

Json LossJson(const ExportReport& report) {
    return {{"colors_found", report.sourceColors},
            {"pixels", report.pixels},
            {"pixels_changed", report.changedPixels},
            {"largest_error", report.largestError},
            {"mean_error", std::round(report.meanError * 1e6) / 1e6},
            {"made_transparent", report.madeTransparent},
            {"made_opaque", report.madeOpaque},
            {"partly_opaque", report.partlyOpaque},
            {"alpha_levels_lost", report.alphaLevels},
            {"pixels_kept", report.KeepsPixels()},
            {"lossless", report.Lossless()},
            {"losses", LossesJson(report)}};
}

} // namespace

std::string JsonLine(const InputOutcome& outcome) {
    Json line = {{"input", outcome.input},
                 {"output", outcome.output.empty() ? Json(nullptr) : Json(outcome.output)},
                 {"written", outcome.written},
                 {"exit_code", static_cast<int>(outcome.code)},
                 {"error", outcome.error.empty() ? Json(nullptr) : Json(outcome.error)},
                 {"error_file", outcome.error.empty() ? Json(nullptr) : Json(outcome.errorFile)},
                 {"seconds", std::round(outcome.seconds * 1e6) / 1e6}};
    if (outcome.report) {
        line["columns"] = outcome.report->columns;
        line["rows"] = outcome.report->rows;
        line.update(LossJson(*outcome.report));
        line["picture"] = InputJson(outcome.report->notes);
        line["file"] = FileJson(*outcome.report);
    }
    return line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace gif89
