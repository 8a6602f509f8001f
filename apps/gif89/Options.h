// The command line's options: one table for parsing and for --help.
#pragma once

#include <string>
#include <vector>

namespace gif89 {

struct Options {
    std::string output;       ///< -o; "-" is standard output
    std::string outputFolder; ///< -O
    bool force = false;
    bool quiet = false;
    bool help = false;
    bool version = false;
    bool about = false;
    bool window = false; ///< show dialogs in windows
    std::vector<std::string> inputs; ///< "-" is standard input
};

/// Parses the arguments after the program's name. Throws Problem with code kUsage.
Options ParseOptions(int argc, char** argv);

std::string HelpText();

} // namespace gif89
