#include "Converter.h"

#include "InputFile.h"
#include "OpenDisplay.h"
#include "Operator.h"
#include "Preset.h"
#include "ReadPicture.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <sstream>
#include <vector>

namespace gif89 {
namespace {

constexpr char kStandardStream[] = "-";
constexpr char kNameOfStandardInput[] = "stdin";
constexpr char kPathOfStandardInput[] = "/dev/stdin", kPathOfStandardOutput[] = "/dev/stdout";
constexpr int kUnseen = 256; // more than any error can be

bool IsStandardStream(const std::string& name) {
    return name == kStandardStream;
}

std::string DocumentNameOf(const std::string& input) {
    if (IsStandardStream(input)) return kNameOfStandardInput;
    return std::filesystem::path(input).stem();
}

bool WritesToStandardOutput(const Options& options) {
    if (!options.outputFolder.empty()) return false;
    if (!options.output.empty()) return IsStandardStream(options.output);
    return std::any_of(options.inputs.begin(), options.inputs.end(), IsStandardStream);
}

bool IsPaletteFile(const std::string& palette) {
    return !palette.empty() && palette != "exact" && palette != "adaptive" && palette != "fixed";
}

bool ReportsToFile(const Options& options) {
    return !options.reportFile.empty() && !IsStandardStream(options.reportFile);
}

Existing ExistingOf(const Options& options) {
    return options.force ? Existing::replace : Existing::keep;
}

Sync SyncOf(const Options& options) {
    return options.sync ? Sync::everything : Sync::replacements;
}

// Where a GIF goes, as far as it is known before the module proposes a name.
std::string TargetOf(const std::string& input, const Destination& destination) {
    if (!destination.file.empty()) return destination.file;
    return std::filesystem::path(destination.folder) / (DocumentNameOf(input) + ".gif");
}

// The module keeps quiet about a palette file that it cannot open.
void CheckPaletteFile(const std::string& palette) {
    if (!IsPaletteFile(palette)) return;
    try {
        InputFile::Open(palette);
    } catch (const Problem& problem) {
        throw Problem("the palette file " + palette + " " + problem.what());
    }
}

std::optional<FileId> IdOfInput(const std::string& input) {
    return IsStandardStream(input) ? FileIdOf(STDIN_FILENO) : FileIdOf(input);
}

std::set<FileId> InputsOf(const Options& options) {
    std::set<FileId> ids;
    const auto add = [&ids](const std::optional<FileId>& id) {
        if (id) ids.insert(*id);
    };
    for (const std::string& input : options.inputs) add(IdOfInput(input));
    for (const ChannelFile& channel : options.channels) add(FileIdOf(channel.path));
    if (IsPaletteFile(options.choices.palette)) add(FileIdOf(options.choices.palette));
    return ids;
}

std::string AdviceOn(Remedy remedy) {
    switch (remedy) {
    case Remedy::none:
        break;
    case Remedy::replaceFile:
        return "; -f replaces it";
    case Remedy::nameOther:
        return "; name another file with -o or -O";
    case Remedy::reduce:
        return "; --palette, --colors and --resize need --mode rgb";
    case Remedy::nameChannel:
        return "; --invert needs a channel, named with --alpha";
    case Remedy::namePalette:
        return "; --resize needs a palette, named with -p";
    case Remedy::leaveCount:
        return "; leave out -n";
    }
    return {};
}

std::string SummaryOf(const InputOutcome& outcome) {
    const ExportReport& report = *outcome.report;
    char numbers[100];
    std::snprintf(numbers, sizeof numbers, ": %d x %d, %d colour%s, %zu bytes, %.2f s",
                  report.columns, report.rows, report.shownColors,
                  report.shownColors == 1 ? "" : "s", report.bytes, outcome.seconds);
    return outcome.input + " -> " + (outcome.output.empty() ? "standard output" : outcome.output) +
           numbers;
}

} // namespace

Converter::Converter(const Options& theOptions)
    : options(theOptions), shaping(ShapingFor(options.choices, options.shaping)),
      module(ExportModule::DefaultPath()), terminal(theOptions.inputs.size()),
      inputs(InputsOf(theOptions)) {
    CheckPaletteFile(options.choices.palette);
    if (options.window) display = OpenDisplay();
    if (options.json) OpenReport();
}

ExitCode Converter::ConvertAll() {
    ExitCode worst = kDone;
    for (std::size_t number = 0; number < options.inputs.size(); ++number) {
        const InputOutcome outcome = Convert(number);
        Tell(outcome);
        worst = std::max(worst, outcome.code);
    }
    if (report) report->Finish(SyncOf(options));
    return worst;
}

InputOutcome Converter::Convert(std::size_t number) {
    const auto start = std::chrono::steady_clock::now();
    InputOutcome outcome;
    outcome.input = outcome.errorFile = options.inputs[number];
    try {
        Work(number, outcome);
    } catch (const Problem& problem) {
        outcome.error = problem.what() + AdviceOn(problem.Cure());
        outcome.code = problem.Code();
        if (!problem.File().empty()) outcome.errorFile = problem.File();
    } catch (const std::exception& exception) {
        outcome.error = SentenceOf(exception);
        outcome.code = kFailed;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    outcome.seconds = took.count();
    return outcome;
}

void Converter::Work(std::size_t number, InputOutcome& outcome) {
    const std::string& input = outcome.input;
    const Destination destination = DestinationOf(input);
    terminal.ShowProgress(number, input, "reading");
    Picture picture = ReadInput(input);
    if (options.commentText) picture.comment = *options.commentText;
    std::optional<Picture> original;
    if (ShapingLoses(picture, shaping) || !options.choices.transparent.empty())
        original = CopyPicture(picture);
    Shape(picture, shaping);
    for (const ChannelFile& channel : options.channels) AddChannel(picture, channel);
    const ExportChoices choices = ChoicesFor(picture);

    terminal.ShowProgress(number, input, "exporting");
    SaveChecks checks;
    checks.original = original ? &*original : nullptr;
    checks.source = IdOfInput(input);
    checks.mayWrite = [this, &checks](const std::string& target) {
        RefuseSecond(target);
        RefuseInput(target, checks.source);
    };
    checks.accept = [this, &outcome](const ExportReport& found) {
        outcome.report = found;
        CheckRequirement(found);
    };
    const SavedGif saved = Save(picture, input, destination, checks, choices);
    outcome.output = saved.path;
    outcome.written = true;
}

Picture Converter::ReadInput(const std::string& input) const {
    InputFile file = IsStandardStream(input) ? InputFile::StandardInput() : InputFile::Open(input);
    return ReadPicture(file, options.orient ? Orientation::upright : Orientation::asStored);
}

Destination Converter::DestinationOf(const std::string& input) const {
    Destination destination;
    destination.existing = ExistingOf(options);
    destination.sync = SyncOf(options);
    if (!options.outputFolder.empty()) {
        destination.folder = options.outputFolder;
    } else if (IsStandardStream(options.output) ||
               (options.output.empty() && IsStandardStream(input))) {
        if (isatty(STDOUT_FILENO))
            throw Problem("a GIF is not written to a terminal; redirect it or use -o FILE", kUsage);
        const auto there = FileIdOf(STDOUT_FILENO);
        if (there && inputs.contains(*there))
            throw Problem("standard output leads to a file that is read", kUsage);
        destination.stream = STDOUT_FILENO;
    } else if (!options.output.empty()) {
        destination.file = options.output;
    } else {
        destination.folder = std::filesystem::path(input).parent_path();
    }
    return destination;
}

// A grey picture's levels as a further plane.
void Converter::AddChannel(Picture& picture, const ChannelFile& source) const {
    if (picture.kind != Picture::Kind::indexed)
        throw Problem("--channel is for indexed pictures", kUsage);
    try {
        const Picture plane = ReadInput(source.path);
        if (plane.rows != picture.rows || plane.columns != picture.columns)
            throw Problem("channel " + source.name + " is " + std::to_string(plane.columns) +
                          " x " + std::to_string(plane.rows) + " pixels; " +
                          std::to_string(picture.columns) + " x " + std::to_string(picture.rows) +
                          " are expected");
        picture.channels.push_back({source.name, TakeGreyLevels(plane)});
    } catch (const Problem& problem) {
        throw problem.About(source.path);
    }
}

// Marks and a channel exclude each other in the dialog, so entries to be hidden join the picture's
// own transparency where it has one.
ExportChoices Converter::ChoicesFor(Picture& picture) const {
    ExportChoices choices = options.choices;
    if (choices.transparent.empty() || OwnTransparency(picture) == 0) return choices;
    HideEntries(picture, choices.transparent);
    choices.transparent.clear();
    return choices;
}

SavedGif Converter::Save(const Picture& picture, const std::string& input,
                         const Destination& destination, const SaveChecks& checks,
                         const ExportChoices& choices) {
    const auto end = options.window ? Operator::End::leavesOpen : Operator::End::confirms;
    Operator user(picture, choices, end);
    std::optional<Preset> preset;
    DialogUser dialogs = {&user.Events(), &user.Files()};
    if (options.window) {
        preset.emplace(user, *display.events, display.files);
        dialogs = {&*preset, &*preset};
    }
    try {
        return SavePicture(module, picture, DocumentNameOf(input), destination, dialogs, checks);
    } catch (const Problem&) {
        user.ThrowFailure();
        throw;
    }
}

// Two inputs of the same name would replace one another, -f or not.
void Converter::RefuseSecond(const std::string& target) {
    if (!written.insert(Identify(FindPlace(target))).second)
        throw Problem("another input of this call was written to " + target + " already");
    if (ReportsToFile(options) && LeadToOneFile(target, options.reportFile))
        throw Problem("the report goes to " + target, kUsage);
}

// What a later input still needs must not go, nor what other choices are read from.
void Converter::RefuseInput(const std::string& target, const std::optional<FileId>& own) const {
    const auto there = FileIdOf(target);
    if (there && there != own && inputs.contains(*there))
        throw Problem("is read by this call, too", kUsage, Remedy::nameOther).About(target);
}

void Converter::CheckRequirement(const ExportReport& found) const {
    const std::string loss = LossText(found);
    if (options.required.lossless && !found.Lossless())
        throw Problem("nothing was written, as --require lossless is not met: " + loss, kNotMet);
    if (!options.required.largestError) return;
    // A pixel whose opacity has changed has no colour to compare.
    const bool opacityKept =
        found.madeTransparent == 0 && found.madeOpaque == 0 && found.partlyOpaque == 0;
    const int error = opacityKept ? found.largestError : kUnseen;
    if (error > *options.required.largestError)
        throw Problem("nothing was written, as --require max-error=" +
                          std::to_string(*options.required.largestError) + " is not met: " + loss,
                      kNotMet);
}

void Converter::Tell(const InputOutcome& outcome) {
    if (report) report->Add(JsonLine(outcome));
    if (outcome.code != kDone) {
        terminal.Error(outcome.errorFile, outcome.error);
        return;
    }
    if (options.quiet) return;
    terminal.Say(SummaryOf(outcome));
    if (options.verbose) {
        std::istringstream lines(ReportText(*outcome.report));
        for (std::string line; std::getline(lines, line);) terminal.Say(line);
    }
    for (const std::string& sentence : outcome.report->notes.warnings)
        terminal.Warning(outcome.input, sentence);
    const std::string loss = LossText(*outcome.report);
    if (!loss.empty()) terminal.Warning(outcome.input, loss);
}

void Converter::OpenReport() {
    const bool toFile = ReportsToFile(options);
    if (!toFile && WritesToStandardOutput(options))
        throw Problem("the GIF goes to standard output; name a --report-file", kUsage);
    if (toFile) RefuseToReplaceByReport();
    report.emplace(toFile ? options.reportFile : std::string(), ExistingOf(options));
}

// Neither by its name nor through a link may the report take the place of a file of this call.
void Converter::RefuseToReplaceByReport() const {
    std::vector<std::string> files = {options.choices.palette};
    for (const ChannelFile& channel : options.channels) files.push_back(channel.path);
    for (const std::string& input : options.inputs) {
        files.push_back(IsStandardStream(input) ? kPathOfStandardInput : input);
        const Destination destination = DestinationOf(input);
        files.push_back(destination.stream >= 0 ? kPathOfStandardOutput
                                                : TargetOf(input, destination));
    }
    for (const std::string& file : files)
        if (!file.empty() && LeadToOneFile(file, options.reportFile))
            throw Problem("--report-file " + options.reportFile + " leads to " + file +
                              ", which this call reads or writes",
                          kUsage);
}

} // namespace gif89
