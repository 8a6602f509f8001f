#include "Converter.h"

#include "Answers.h"
#include "InputFile.h"
#include "OpenDisplay.h"
#include "Preset.h"
#include "ReadPalette.h"
#include "ReadPicture.h"
#include "ReducePicture.h"
#include "RefusalText.h"
#include "Streams.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
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

// Reads the palette file, unless that is left to the module.
Wishes WishesOf(const Options& options) {
    Wishes wishes = options.wishes;
    if (wishes.palette != PaletteKind::file) return wishes;
    const bool isModules = wishes.mode != Mode::automatic || wishes.resize || wishes.leavesToModule;
    try {
        if (isModules)
            InputFile::Open(wishes.paletteFile); // the module keeps quiet about a missing file
        else
            wishes.given = ReadPaletteFile(wishes.paletteFile);
    } catch (const Problem& problem) {
        throw Problem("the palette file " + wishes.paletteFile + " " + problem.what());
    }
    return wishes;
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
    if (!options.wishes.paletteFile.empty()) add(FileIdOf(options.wishes.paletteFile));
    return ids;
}

std::string LineText(const ReportLine& line) {
    constexpr std::size_t kTextColumn = 16;
    std::string text = "  " + line.label + ':';
    text.resize(std::max(text.size() + 1, kTextColumn), ' ');
    return text + line.text;
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
    : options(theOptions), wishes(WishesOf(theOptions)), module(ExportModule::DefaultPath()),
      terminal(theOptions.inputs.size()), inputs(InputsOf(theOptions)) {
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
        outcome.error = std::string(problem.what()) + AdviceOn(problem.Kind());
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
    if (options.printedPalette) return PrintPalette(input);
    const Destination destination = DestinationOf(input);
    terminal.ShowProgress(number, input, "reading");
    Picture picture = ReadInput(input);
    std::optional<Picture> original;
    if (ChangesPixels(picture, wishes)) original = CopyPicture(picture);
    const Plan plan = Prepare(picture);
    if (plan.way == Way::reduced) {
        Picture reduced = ReducePicture(picture, plan.reduction);
        if (!original) original = std::move(picture);
        picture = std::move(reduced);
    }

    terminal.ShowProgress(number, input, "exporting");
    SaveChecks checks;
    checks.original = original ? &*original : nullptr;
    checks.source = IdOfInput(input);
    checks.mayWrite = [this, &checks](const std::string& target) {
        RefuseInput(target, checks.source);
        RefuseSecond(target);
    };
    checks.accept = [this, &outcome](const ExportReport& found) {
        outcome.report = found;
        CheckRequirement(found);
    };
    const SavedGif saved = Save(picture, plan, input, destination, checks);
    if (!saved.path.empty()) written.insert(Identify(FindPlace(saved.path)));
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
            throw Problem("a GIF is not written to a terminal; redirect it or use -o FILE",
                          ProblemKind::usage);
        const auto there = FileIdOf(STDOUT_FILENO);
        if (there && inputs.contains(*there))
            throw Problem("standard output leads to a file that is read", ProblemKind::usage);
        destination.stream = STDOUT_FILENO;
    } else if (!options.output.empty()) {
        destination.file = options.output;
    } else {
        destination.folder = std::filesystem::path(input).parent_path();
    }
    return destination;
}

void Converter::PrintPalette(const std::string& input) const {
    const PaletteFormat format = *options.printedPalette;
    if (format == PaletteFormat::act && isatty(STDOUT_FILENO))
        throw Problem("a colour table is not written to a terminal; redirect it",
                      ProblemKind::usage);
    Picture picture = ReadInput(input);
    const Plan plan = Prepare(picture);
    if (plan.way == Way::reduced) picture = ReducePicture(picture, plan.reduction);
    Palette palette = TableOf(picture);
    // The entry that was added for transparent pixels is no colour of the picture.
    if (picture.notes.madeIndexed && OpacityOf(picture)) palette.pop_back();
    if (palette.empty()) throw Problem("has no colours, as no pixel can be seen");
    if (!WriteAll(STDOUT_FILENO, PaletteText(format, palette, DocumentNameOf(input))))
        throw OutputProblem("cannot be written: " + SystemReason()).About("standard output");
}

// Brings the picture into the shape in which it is exported.
Plan Converter::Prepare(Picture& picture) const {
    ApplyWishes(picture, wishes);
    for (const ChannelFile& channel : options.channels) AddChannel(picture, channel);
    auto planned = MakePlan(picture, wishes);
    if (const auto* const refusal = std::get_if<Refusal>(&planned))
        throw Problem(TextOf(*refusal), ProblemKind::usage);
    Plan plan = std::get<Plan>(std::move(planned));
    BringIntoShape(picture, plan);
    return plan;
}

// A grey picture's levels as a further plane.
void Converter::AddChannel(Picture& picture, const ChannelFile& source) const {
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

SavedGif Converter::Save(const Picture& picture, const Plan& plan, const std::string& input,
                         const Destination& destination, const SaveChecks& checks) {
    Answers answers(plan, options.window ? Answers::End::leavesOpen : Answers::End::confirms);
    std::optional<Preset> preset;
    if (options.window) preset.emplace(answers, *display.events, display.files);
    const DialogUser user = preset ? preset->User() : answers.User();
    try {
        return SavePicture(module, picture, DocumentNameOf(input), destination, user, checks);
    } catch (const Problem&) {
        answers.ThrowFailure();
        throw;
    }
}

// Two inputs of the same name would replace one another, -f or not.
void Converter::RefuseSecond(const std::string& target) const {
    if (written.contains(Identify(FindPlace(target))))
        throw Problem("another input of this call was written to " + target + " already");
    if (ReportsToFile(options) && LeadToOneFile(target, options.reportFile))
        throw Problem("the report goes to " + target, ProblemKind::usage);
}

// What a later input still needs must not go, nor what other choices are read from.
void Converter::RefuseInput(const std::string& target, const std::optional<FileId>& own) const {
    const auto there = FileIdOf(target);
    if (there && there != own && inputs.contains(*there))
        throw Problem("is read by this call, too", ProblemKind::fileIsInput).About(target);
}

void Converter::CheckRequirement(const ExportReport& found) const {
    const std::string loss = LossText(found);
    if (options.required.lossless && !found.Lossless())
        throw Problem("nothing was written, as --require lossless is not met: " + loss,
                      ProblemKind::notMet);
    if (!options.required.largestError) return;
    // A pixel whose opacity has changed has no colour to compare.
    const bool opacityKept =
        found.madeTransparent == 0 && found.madeOpaque == 0 && found.partlyOpaque == 0;
    const int error = opacityKept ? found.largestError : kUnseen;
    if (error > *options.required.largestError)
        throw Problem("nothing was written, as --require max-error=" +
                          std::to_string(*options.required.largestError) + " is not met: " + loss,
                      ProblemKind::notMet);
}

void Converter::Tell(const InputOutcome& outcome) {
    if (report) report->Add(JsonLine(outcome));
    if (outcome.code != kDone) {
        terminal.Error(outcome.errorFile, outcome.error);
        return;
    }
    if (options.quiet || !outcome.report) return;
    terminal.Say(SummaryOf(outcome));
    if (options.verbose)
        for (const ReportLine& line : ReportLines(*outcome.report)) terminal.Say(LineText(line));
    for (const std::string& sentence : outcome.report->notes.warnings)
        terminal.Warning(outcome.input, sentence);
    const std::string loss = LossText(*outcome.report);
    if (!loss.empty()) terminal.Warning(outcome.input, loss);
}

void Converter::OpenReport() {
    const bool toFile = ReportsToFile(options);
    if (!toFile && WritesToStandardOutput(options))
        throw Problem("the GIF goes to standard output; name a --report-file", ProblemKind::usage);
    if (toFile) RefuseToReplaceByReport();
    report.emplace(toFile ? options.reportFile : std::string(), ExistingOf(options));
}

// Neither by its name nor through a link may the report take the place of a file of this call.
void Converter::RefuseToReplaceByReport() const {
    std::vector<std::string> files = {options.wishes.paletteFile};
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
                          ProblemKind::usage);
}

} // namespace gif89
