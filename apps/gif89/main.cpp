// gif89: saves pictures as GIF89a files through the export module.
#include "Converter.h"
#include "EventSource.h"
#include "ExportModule.h"
#include "NoticeResponder.h"
#include "OpenDisplay.h"
#include "Options.h"
#include "Problem.h"
#include "StagedFile.h"
#include "Usage.h"

#include <cstdio>
#include <exception>

namespace gif89 {
namespace {

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

ExitCode Run(const Options& options) {
    if (options.help)
        std::fputs(HelpText().c_str(), stdout);
    else if (options.version)
        std::puts("gif89 " GIF89_VERSION);
    else if (options.about)
        ShowAboutBox(options.window);
    else {
        HandleSignalsWhileSaving();
        return Converter(options).ConvertAll();
    }
    if (std::fflush(stdout) != 0) throw Problem("standard output cannot be written");
    return kDone;
}

} // namespace
} // namespace gif89

int main(int argc, char** argv) {
    try {
        return gif89::Run(gif89::ParseOptions(argc, argv));
    } catch (const gif89::Problem& problem) {
        std::fprintf(stderr, "gif89: %s\n", problem.what());
        return problem.Code();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "gif89: %s\n", error.what());
        return gif89::kFailed;
    }
}
