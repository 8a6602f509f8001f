// The command line's options: one table for parsing, --help, the manual page and the completions.
#pragma once

#include "Plan.h"
#include "WritePalette.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace gif89 {

/// A further plane for an indexed picture.
struct ChannelFile {
    std::string name;
    std::string path;
};

/// What a file must be to be written.
struct Requirement {
    bool lossless = false;
    std::optional<int> largestError; ///< 0..255
};

struct Options {
    std::string output;       ///< -o; "-" is standard output
    std::string outputFolder; ///< -O
    bool force = false;
    bool sync = false;
    bool orient = true;
    std::vector<ChannelFile> channels; ///< --channel; the wishes have their names
    Wishes wishes;
    Requirement required;
    std::optional<PaletteFormat> printedPalette; ///< --print-palette, instead of an export
    bool quiet = false;
    bool verbose = false;
    bool json = false;      ///< --report json
    std::string reportFile; ///< --report-file; empty is standard output
    bool help = false;
    bool version = false;
    bool about = false;
    bool window = false;             ///< show dialogs in windows
    std::vector<std::string> inputs; ///< "-" is standard input
};

/// Parses the arguments after the program's name. Throws Problem of kind usage.
Options ParseOptions(int argc, char** argv);

/// What an option's value is, for completions.
enum class ValueKind : std::uint8_t { none, text, file, folder, choice };

struct Option {
    char letter; ///< 0 for none
    const char* name;
    const char* argument; ///< null for none
    ValueKind valueKind;
    const char* values; ///< the choices, with spaces between; null when it is no choice
    const char* help;
    void (*apply)(Options& options, const char* value);
};

/// Options under one heading.
struct OptionGroup {
    const char* heading;
    std::span<const Option> options;
};
std::span<const OptionGroup> TheOptionGroups();

} // namespace gif89
