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

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <new>
#include <set>

namespace gif89 {
namespace {

constexpr char kStandardStream[] = "-";
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

/// Converts the inputs of one call.
class Converter {
  public:
    explicit Converter(const Options& theOptions)
        : options(theOptions), module(ExportModule::DefaultPath()) {}

    void Convert(const std::string& input) {
        const auto start = std::chrono::steady_clock::now();
        const Destination destination = DestinationOf(input, options);
        InputFile file =
            IsStandardStream(input) ? InputFile::StandardInput() : InputFile::Open(input);
        Picture picture = ReadPicture(file);
        ExpandToRGB(picture);
        const SavedGif saved =
            SavePicture(module, picture, DocumentNameOf(input), destination,
                        [this](const std::string& target) { RefuseSecond(target); });
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        if (!options.quiet) Report(input, saved, took.count());
    }

  private:
    // Two inputs of the same name would replace one another, -f or not.
    void RefuseSecond(const std::string& target) {
        if (!written.insert(std::filesystem::absolute(target).lexically_normal()).second)
            throw Problem("another input of this call was written to " + target + " already");
    }

    static void Report(const std::string& input, const SavedGif& saved, double seconds) {
        const std::string output = saved.path.empty() ? "standard output" : saved.path;
        std::fprintf(stderr, "%s -> %s: %d x %d, %d colours, %zu bytes, %.2f s\n", input.c_str(),
                     output.c_str(), saved.columns, saved.rows, saved.colors, saved.bytes, seconds);
    }

    const Options& options;
    const ExportModule module;
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
            if (problem.Code() == kUsage) return kUsage;
            worst = kFailed;
        } catch (const std::bad_alloc&) {
            Say(input, "not enough memory for the picture");
            worst = kFailed;
        } catch (const std::exception& error) {
            Say(input, error.what());
            worst = kFailed;
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
