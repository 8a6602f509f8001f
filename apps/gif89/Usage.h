// The option table as people read it and as shells complete it.
#pragma once

#include <string>

namespace gif89 {

/// What --help prints, lines of at most 79 columns.
std::string HelpText();

/// The manual page gif89(1), in the man macros.
std::string ManualPage();

/// Completion scripts for the shells' own machinery.
std::string BashCompletion();
std::string ZshCompletion();
std::string FishCompletion();

} // namespace gif89
