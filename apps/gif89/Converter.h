// Converts the inputs of one call, one after another.
#pragma once

#include "Display.h"
#include "ExportModule.h"
#include "FileId.h"
#include "FilePlace.h"
#include "JsonReport.h"
#include "Options.h"
#include "Picture.h"
#include "Plan.h"
#include "ReportFile.h"
#include "SavePicture.h"
#include "Terminal.h"

#include <optional>
#include <set>

namespace gif89 {

class Converter {
  public:
    /// Loads the module, opens the display and the report file as far as they are wanted. Throws
    /// Problem. The options must outlive it.
    explicit Converter(const Options& theOptions);

    /// Converts all inputs, goes on after those that fail, and returns the highest code.
    ExitCode ConvertAll();

  private:
    InputOutcome Convert(std::size_t number);
    void Work(std::size_t number, InputOutcome& outcome);
    Picture ReadInput(const std::string& input) const;
    Destination DestinationOf(const std::string& input) const;
    void PrintPalette(const std::string& input) const;
    Plan Prepare(Picture& picture) const;
    void AddChannel(Picture& picture, const ChannelFile& source) const;
    SavedGif Save(const Picture& picture, const Plan& plan, const std::string& input,
                  const Destination& destination, const SaveChecks& checks);
    void RefuseSecond(const std::string& target) const;
    void RefuseInput(const std::string& target, const std::optional<FileId>& own) const;
    void CheckRequirement(const ExportReport& report) const;
    void Tell(const InputOutcome& outcome);
    void OpenReport();
    void RefuseToReplaceByReport() const;

    const Options& options;
    const Wishes wishes; ///< the options', with the palette that was loaded
    const ExportModule module;
    Terminal terminal;
    DisplayParts display;
    std::optional<ReportFile> report; ///< with --report
    std::set<PlaceId> written;
    const std::set<FileId> inputs; ///< all files that are read
};

} // namespace gif89
