// gif89: saves pictures as GIF89a files through the export module.
#include "Converter.h"
#include "EventSource.h"
#include "ExportModule.h"
#include "NoticeResponder.h"
#include "OpenDisplay.h"
#include "Options.h"
#include "Problem.h"
#include "StagedFile.h"
#include "Streams.h"
#include "Terminal.h"
#include "Usage.h"

#include <exception>

namespace gif89 {
namespace {

/// Takes an about box as text.
class AboutText final : public NoticeResponder {
  public:
    AboutText() : outer(SetNoticeResponder(this)) {}
    ~AboutText() override { SetNoticeResponder(outer); }
    void Warn(const std::string& sentence) override { Terminal(0).Error(sentence); }
    void About(const std::vector<std::string>& lines) override {
        for (const std::string& line : lines) text += line + '\n';
    }

    std::string text;

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
        const AboutText about;
        ask();
        WriteToStandardOutput(about.text);
    }
}

ExitCode Run(const Options& options) {
    if (options.help)
        WriteToStandardOutput(HelpText());
    else if (options.version)
        WriteToStandardOutput("gif89 " GIF89_VERSION "\n");
    else if (options.about)
        ShowAboutBox(options.window);
    else {
        HandleSignalsWhileSaving();
        return Converter(options).ConvertAll();
    }
    return kDone;
}

} // namespace
} // namespace gif89

int main(int argc, char** argv) {
    using namespace gif89;
    OccupyStandardStreams();
    try {
        return Run(ParseOptions(argc, argv));
    } catch (const std::exception& exception) {
        Terminal(0).Error(SentenceOf(exception));
        const auto* const problem = dynamic_cast<const Problem*>(&exception);
        return problem ? problem->Code() : kFailed;
    }
}
