// The command line's options: one table for parsing and for --help.
#pragma once

#include "Operator.h"

#include <optional>
#include <string>
#include <vector>

namespace gif89 {

/// Which way a picture goes.
enum class Mode : std::uint8_t { natural, rgb, indexed };

/// A further plane for an indexed picture.
struct ChannelFile {
    std::string name;
    std::string path;
};

struct Options {
    std::string output;       ///< -o; "-" is standard output
    std::string outputFolder; ///< -O
    bool force = false;
    Mode mode = Mode::natural;
    ExportChoices choices;
    std::vector<ChannelFile> channels;      ///< --channel
    std::optional<std::string> commentText; ///< --comment; replaces the picture's own
    bool quiet = false;
    bool help = false;
    bool version = false;
    bool about = false;
    bool window = false;             ///< show dialogs in windows
    std::vector<std::string> inputs; ///< "-" is standard input
};

/// Parses the arguments after the program's name. Throws Problem with code kUsage.
Options ParseOptions(int argc, char** argv);

std::string HelpText();

} // namespace gif89
