// gif89: saves pictures as GIF89a files through the export module.
#include "EventSource.h"
#include "ExportModule.h"
#include "HostUtilities.h"
#include "InputFile.h"
#include "OpenDisplay.h"
#include "Options.h"
#include "Problem.h"
#include "ReadPicture.h"
#include "SavePicture.h"
#include "StagedFile.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <new>
#include <set>

namespace gif89 {
namespace {

constexpr char kStandardStream[] = "-";
constexpr RGBtuple kWhite = {0, 255, 255, 255};
constexpr char kNameOfStandardInput[] = "stdin";

bool IsStandardStream(const std::string& name) {
    return name == kStandardStream;
}

void Say(const std::string& file, const std::string& sentence) {
    std::fprintf(stderr, "gif89: %s: %s\n", file.c_str(), sentence.c_str());
}

Destination DestinationOf(const std::string& input, const Options& options) {
    Destination destination;
    destination.existing = options.force ? Existing::replace : Existing::keep;
    if (!options.outputFolder.empty()) {
        destination.folder = options.outputFolder;
    } else if (IsStandardStream(options.output) ||
               (options.output.empty() && IsStandardStream(input))) {
        if (isatty(STDOUT_FILENO))
            throw Problem("a GIF is not written to a terminal; redirect it or use -o FILE", kUsage);
        destination.stream = STDOUT_FILENO;
    } else if (!options.output.empty()) {
        destination.file = options.output;
    } else {
        destination.folder = std::filesystem::path(input).parent_path();
    }
    return destination;
}

std::string DocumentNameOf(const std::string& input) {
    if (IsStandardStream(input)) return kNameOfStandardInput;
    return std::filesystem::path(input).stem();
}

Picture ReadInput(const std::string& input) {
    InputFile file = IsStandardStream(input) ? InputFile::StandardInput() : InputFile::Open(input);
    return ReadPicture(file);
}

// A grey picture's levels as a further plane.
void AddChannel(Picture& picture, const ChannelFile& source) {
    if (picture.kind != Picture::Kind::indexed)
        throw Problem("--channel is for indexed pictures", kUsage);
    Picture plane;
    try {
        plane = ReadInput(source.path);
    } catch (const Problem& problem) {
        throw Problem("channel " + source.name + ": " + source.path + " " + problem.what());
    }
    if (plane.rows != picture.rows || plane.columns != picture.columns)
        throw Problem("channel " + source.name + " is " + std::to_string(plane.columns) + " x " +
                      std::to_string(plane.rows) + " pixels; " + std::to_string(picture.columns) +
                      " x " + std::to_string(picture.rows) + " are expected");
    picture.channels.push_back({source.name, TakeGreyLevels(plane)});
}

// Brings a picture to the shape in which it is exported.
void Shape(Picture& picture, const Options& options) {
    if (options.commentText) picture.comment = *options.commentText;
    if (options.mode == Mode::indexed && picture.kind != Picture::Kind::indexed)
        throw Problem("has no palette; --mode indexed is for palette and grey pictures", kUsage);
    if (options.mode == Mode::rgb) ExpandToRGB(picture);
    for (const ChannelFile& channel : options.channels) AddChannel(picture, channel);
    if (options.choices.opaque) FlattenAlpha(picture, options.choices.matte.value_or(kWhite));
}

// The module keeps quiet about a palette file that it cannot open.
void CheckPaletteFile(const std::string& palette) {
    if (palette.empty() || palette == "exact" || palette == "adaptive" || palette == "fixed")
        return;
    try {
        InputFile::Open(palette);
    } catch (const Problem& problem) {
        throw Problem("the palette file " + palette + " " + problem.what());
    }
}

/// Converts the inputs of one call.
class Converter {
  public:
    explicit Converter(const Options& theOptions)
        : options(theOptions), module(ExportModule::DefaultPath()) {
        if (options.window) display = OpenDisplay();
        CheckPaletteFile(options.choices.palette);
    }

    void Convert(const std::string& input) {
        const auto start = std::chrono::steady_clock::now();
        const Destination destination = DestinationOf(input, options);
        Picture picture = ReadInput(input);
        Shape(picture, options);
        const SavedGif saved = Save(picture, input, destination);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        if (!options.quiet) Report(input, saved, took.count());
    }

  private:
    // Two inputs of the same name would replace one another, -f or not.
    void RefuseSecond(const std::string& target) {
        if (!written.insert(std::filesystem::absolute(target).lexically_normal()).second)
            throw Problem("another input of this call was written to " + target + " already");
    }

    SavedGif Save(const Picture& picture, const std::string& input,
                  const Destination& destination) {
        const auto save = [&](const DialogUser& user) {
            return SavePicture(module, picture, DocumentNameOf(input), destination, user,
                               [this](const std::string& target) { RefuseSecond(target); });
        };
        if (options.window) return save({display.events, display.files});
        Operator user(picture, options.choices);
        try {
            return save({&user.Events(), &user.Files()});
        } catch (const Problem&) {
            user.ThrowFailure();
            throw;
        }
    }

    static void Report(const std::string& input, const SavedGif& saved, double seconds) {
        const std::string output = saved.path.empty() ? "standard output" : saved.path;
        std::fprintf(stderr, "%s -> %s: %d x %d, %d colours, %zu bytes, %.2f s\n", input.c_str(),
                     output.c_str(), saved.columns, saved.rows, saved.colors, saved.bytes, seconds);
    }

    const Options& options;
    const ExportModule module;
    DisplayParts display;
    std::set<std::filesystem::path> written;
};

/// Prints an about box as text.
class AboutPrinter final : public NoticeResponder {
  public:
    AboutPrinter() : outer(SetNoticeResponder(this)) {}
    ~AboutPrinter() override { SetNoticeResponder(outer); }
    void Warn(const std::string& sentence) override {
        std::fprintf(stderr, "gif89: %s\n", sentence.c_str());
    }
    void About(const std::vector<std::string>& lines) override {
        for (const std::string& line : lines) std::puts(line.c_str());
    }

  private:
    NoticeResponder* outer;
};

// The module's own about box: on the display, or its texts.
void ShowAboutBox(bool inWindow) {
    const ExportModule module(ExportModule::DefaultPath());
    const auto ask = [&module] { module.Call(kSelectorAbout, nullptr, nullptr, nullptr); };
    if (inWindow) {
        SetEventSource(OpenDisplay().events);
        ask();
    } else {
        const AboutPrinter printer;
        ask();
    }
}

ExitCode ConvertAll(const Options& options) {
    Converter converter(options);
    ExitCode worst = kDone;
    for (const std::string& input : options.inputs) {
        try {
            converter.Convert(input);
        } catch (const Problem& problem) {
            Say(input, problem.what());
            worst = std::max(worst, problem.Code());
        } catch (const std::bad_alloc&) {
            Say(input, "not enough memory for the picture");
            worst = std::max(worst, kFailed);
        } catch (const std::exception& error) {
            Say(input, error.what());
            worst = std::max(worst, kFailed);
        }
    }
    return worst;
}

} // namespace
} // namespace gif89

int main(int argc, char** argv) {
    using namespace gif89;
    try {
        const Options options = ParseOptions(argc, argv);
        if (options.help) {
            std::fputs(HelpText().c_str(), stdout);
            return kDone;
        }
        if (options.version) {
            std::puts("gif89 " GIF89_VERSION);
            return kDone;
        }
        if (options.about) {
            ShowAboutBox(options.window);
            return kDone;
        }
        HandleSignalsWhileSaving();
        return ConvertAll(options);
    } catch (const Problem& problem) {
        std::fprintf(stderr, "gif89: %s\n", problem.what());
        return problem.Code();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "gif89: %s\n", error.what());
        return kFailed;
    }
}
