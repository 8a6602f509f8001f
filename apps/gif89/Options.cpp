#include "Options.h"

#include "Problem.h"

#include <getopt.h>

#include <cstdio>

namespace gif89 {
namespace {

struct Option {
    char letter; ///< 0 for none
    const char* name;
    const char* argument; ///< null for none
    const char* help;
    void (*apply)(Options& options, const char* value);
};

void SetMode(Options&, const char* value) {
    if (std::string(value) != "rgb")
        throw Problem("--mode " + std::string(value) + " is not known; expected rgb", kUsage);
}

constexpr Option kOptions[] = {
    {'o', "output", "FILE", "write FILE; - is standard output",
     [](Options& o, const char* value) { o.output = value; }},
    {'O', "output-folder", "DIR", "write into DIR under the input's name",
     [](Options& o, const char* value) { o.outputFolder = value; }},
    {'f', "force", nullptr, "replace existing files",
     [](Options& o, const char*) { o.force = true; }},
    {0, "mode", "MODE", "rgb: reduce the colours (the only mode so far)", SetMode},
    {'q', "quiet", nullptr, "say nothing but errors",
     [](Options& o, const char*) { o.quiet = true; }},
    {'h', "help", nullptr, "show this help", [](Options& o, const char*) { o.help = true; }},
    {0, "version", nullptr, "show the version", [](Options& o, const char*) { o.version = true; }},
    {0, "about", nullptr, "say what this is; with --window in a window",
     [](Options& o, const char*) { o.about = true; }},
    {0, "window", nullptr, "show dialogs on the display",
     [](Options& o, const char*) { o.window = true; }},
};

std::string DescribeRefused(int answer, char** argv) {
    const std::string word =
        optopt != 0 ? std::string("-") + static_cast<char>(optopt) : argv[optind - 1];
    if (answer == ':') return "option " + word + " needs a value";
    return "option " + word + " is not known or takes no value";
}

} // namespace

Options ParseOptions(int argc, char** argv) {
    // The letters stand in `letters`; options without one answer their place in the table.
    std::string letters = ":";
    std::vector<option> names;
    constexpr int kFirstPlace = 256;
    int place = kFirstPlace;
    for (const Option& entry : kOptions) {
        if (entry.letter != 0) {
            letters += entry.letter;
            if (entry.argument) letters += ':';
        }
        names.push_back(
            {entry.name, entry.argument ? required_argument : no_argument, nullptr, place++});
    }
    names.push_back({});

    Options options;
    opterr = 0;
    optind = 0; // start anew, whatever was parsed before
    int answer;
    while ((answer = getopt_long(argc, argv, letters.c_str(), names.data(), nullptr)) != -1) {
        if (answer == '?' || answer == ':') throw Problem(DescribeRefused(answer, argv), kUsage);
        for (const Option& entry : kOptions)
            if (answer == entry.letter ||
                answer == kFirstPlace + static_cast<int>(&entry - kOptions))
                entry.apply(options, optarg);
    }
    options.inputs.assign(argv + optind, argv + argc);
    if (options.help || options.version || options.about) return options;

    if (options.inputs.empty()) throw Problem("no input given; see --help", kUsage);
    if (!options.output.empty() && !options.outputFolder.empty())
        throw Problem("-o and -O exclude each other", kUsage);
    if (!options.output.empty() && options.inputs.size() > 1)
        throw Problem("-o takes one input; -O DIR takes many", kUsage);
    return options;
}

std::string HelpText() {
    std::string text =
        "Usage: gif89 [OPTION]... [--] INPUT...\n"
        "Saves pictures (PNG, JPEG, PGM, PPM, PAM) as GIF89a files beside them.\n"
        "INPUT - is standard input; its GIF goes to standard output unless -o or -O\n"
        "says otherwise.\n\n";
    for (const Option& entry : kOptions) {
        std::string left = entry.letter ? std::string("  -") + entry.letter + ", " : "      ";
        left += std::string("--") + entry.name;
        if (entry.argument) left += std::string("=") + entry.argument;
        char line[160];
        std::snprintf(line, sizeof line, "%-30s %s\n", left.c_str(), entry.help);
        text += line;
    }
    text += "\nExit status: 0 all written, 1 some input failed, 2 wrong usage.\n";
    return text;
}

} // namespace gif89
