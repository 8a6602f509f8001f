#include "Options.h"

#include "Problem.h"

#include <getopt.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace gif89 {
namespace {

struct Option {
    char letter; ///< 0 for none
    const char* name;
    const char* argument; ///< null for none
    const char* help;
    void (*apply)(Options& options, const char* value);
};

void SetMode(Options& options, const char* value) {
    const std::string mode = value;
    if (mode == "rgb")
        options.mode = Mode::rgb;
    else if (mode == "indexed")
        options.mode = Mode::indexed;
    else
        throw Problem("--mode " + mode + " is not known; expected rgb or indexed", kUsage);
}

void AddEntries(Options& options, const char* value) {
    const std::string list = value;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        options.choices.transparent.push_back(list.substr(start, end - start));
        start = end + 1;
    }
}

void AddChannel(Options& options, const char* value) {
    const std::string text = value;
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        throw Problem("--channel " + text + " is not understood; expected NAME=FILE", kUsage);
    options.channels.push_back({text.substr(0, equals), text.substr(equals + 1)});
}

void SetColors(Options& options, const char* value) {
    char* end = nullptr;
    const long colors = std::strtol(value, &end, 10);
    if (*value == '\0' || *end != '\0' || colors < 2 || colors > 256)
        throw Problem("-n " + std::string(value) + " is out of range; expected 2 to 256", kUsage);
    options.choices.colors = static_cast<int>(colors);
}

void SetComment(Options& options, const char* value) {
    options.commentText = value;
    options.choices.comment = true;
}

constexpr Option kOptions[] = {
    {'o', "output", "FILE", "write FILE; - is standard output",
     [](Options& o, const char* value) { o.output = value; }},
    {'O', "output-folder", "DIR", "write into DIR under the input's name",
     [](Options& o, const char* value) { o.outputFolder = value; }},
    {'f', "force", nullptr, "replace existing files",
     [](Options& o, const char*) { o.force = true; }},
    {0, "window", nullptr, "ask for the options in a window",
     [](Options& o, const char*) { o.window = true; }},
    {0, "mode", "MODE", "rgb: reduce the colours; indexed: keep the palette", SetMode},
    {0, "interlace", nullptr, "store the rows in four passes (the usual way)",
     [](Options& o, const char*) { o.choices.interlace = true; }},
    {0, "no-interlace", nullptr, "store the rows from top to bottom",
     [](Options& o, const char*) { o.choices.interlace = false; }},
    {0, "comment", "TEXT", "write TEXT as the file's comment", SetComment},
    {0, "no-comment", nullptr, "leave out the picture's comment",
     [](Options& o, const char*) { o.choices.comment = false; }},
    {0, "matte", "COLOR", "colour behind transparency: #rrggbb or r,g,b",
     [](Options& o, const char* value) { o.choices.matte = ParseColor(value); }},
    {0, "opaque", nullptr, "no transparency",
     [](Options& o, const char*) { o.choices.opaque = true; }},
    {0, "transparent", "LIST", "indexed: entries to hide, by number or #rrggbb", AddEntries},
    {0, "alpha", "CHANNEL", "indexed: hide what this channel hides, by name or number",
     [](Options& o, const char* value) { o.choices.alpha = value; }},
    {0, "invert", nullptr, "indexed: the channel hides where it is bright",
     [](Options& o, const char*) { o.choices.invert = true; }},
    {0, "channel", "NAME=FILE", "indexed: add a grey picture as a channel", AddChannel},
    {'p', "palette", "PALETTE", "rgb: exact, adaptive, fixed, or a palette file",
     [](Options& o, const char* value) { o.choices.palette = value; }},
    {'n', "colors", "N", "rgb: number of colours, 2 to 256", SetColors},
    {0, "resize", nullptr, "rgb: cut a fixed or loaded palette to -n colours",
     [](Options& o, const char*) { o.choices.resize = true; }},
    {'q', "quiet", nullptr, "say nothing but errors",
     [](Options& o, const char*) { o.quiet = true; }},
    {'h', "help", nullptr, "show this help", [](Options& o, const char*) { o.help = true; }},
    {0, "version", nullptr, "show the version", [](Options& o, const char*) { o.version = true; }},
    {0, "about", nullptr, "say what this is; with --window in a window",
     [](Options& o, const char*) { o.about = true; }},
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

    const ExportChoices& choices = options.choices;
    const int ways = (choices.transparent.empty() ? 0 : 1) + (choices.alpha.empty() ? 0 : 1) +
                     (choices.opaque ? 1 : 0);
    if (ways > 1) throw Problem("--transparent, --alpha and --opaque exclude each other", kUsage);
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
