// The report of an export as JSON.
#pragma once

#include "ExportReport.h"
#include "Problem.h"

#include <optional>
#include <string>

namespace gif89 {

/// What became of one input.
struct InputOutcome {
    std::string input;
    std::string output; ///< empty: standard output, or nothing was written
    bool written = false;
    std::optional<ExportReport> report; ///< known as soon as there was a file to look at
    std::string error;                  ///< empty when all went well
    std::string errorFile;              ///< which file the error is about
    ExitCode code = kDone;
    double seconds = 0;
};

/// One object on one line, with a newline. Names that are no UTF-8 get U+FFFD for the bytes that
/// are wrong.
std::string JsonLine(const InputOutcome& outcome);

} // namespace gif89
