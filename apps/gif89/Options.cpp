#include "Options.h"

#include "Problem.h"

#include <getopt.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace gif89 {
namespace {

using enum ValueKind;

std::optional<int> ParseNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

int ParseInRange(const std::string& option, const std::string& value, int least, int most) {
    const auto number = ParseNumber(value);
    if (!number || *number < least || *number > most)
        throw Problem(option + " " + value + " is not understood; expected " +
                          std::to_string(least) + " to " + std::to_string(most),
                      ProblemKind::usage);
    return *number;
}

std::vector<std::string> SplitList(const std::string& list) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        parts.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::optional<RGBtuple> ParseHexColor(std::string_view text) {
    PackedColor packed = 0;
    if (text.size() != 7 || text[0] != '#') return std::nullopt;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 7, packed, 16);
    if (error != std::errc() || end != text.data() + 7) return std::nullopt;
    return UnpackColor(packed);
}

RGBtuple ParseColor(const std::string& text) {
    if (const auto color = ParseHexColor(text)) return *color;
    std::vector<std::uint8_t> levels;
    const std::vector<std::string> parts = SplitList(text);
    for (const std::string& part : parts) {
        const auto level = ParseNumber(part);
        if (!level || *level < 0 || *level > 255) break;
        levels.push_back(static_cast<std::uint8_t>(*level));
    }
    if (parts.size() == 3 && levels.size() == 3) return {0, levels[0], levels[1], levels[2]};
    throw Problem("\"" + text + "\" is no colour; expected #rrggbb or red,green,blue of 0 to 255",
                  ProblemKind::usage);
}

std::string NotEmpty(const char* option, const char* value) {
    if (*value == '\0')
        throw Problem(std::string("option ") + option + " needs a value", ProblemKind::usage);
    return value;
}

void SetMode(Options& options, const char* value) {
    const std::string mode = value;
    if (mode == "rgb")
        options.wishes.mode = Mode::rgb;
    else if (mode == "indexed")
        options.wishes.mode = Mode::indexed;
    else
        throw Problem("--mode " + mode + " is not known; expected rgb or indexed",
                      ProblemKind::usage);
}

void SetPalette(Options& options, const char* value) {
    using enum PaletteKind;
    const std::string palette = NotEmpty("-p", value);
    const std::pair<const char*, PaletteKind> kinds[] = {{"best", best},         {"web", web},
                                                         {"grey", grey},         {"exact", exact},
                                                         {"adaptive", adaptive}, {"fixed", fixed}};
    const auto* const known = std::find_if(std::begin(kinds), std::end(kinds),
                                           [&](const auto& kind) { return palette == kind.first; });
    const bool isFile = known == std::end(kinds);
    options.wishes.palette = isFile ? PaletteKind::file : known->second;
    options.wishes.paletteFile = isFile ? palette : std::string();
}

/// The one of `choices`, pairs of a name and a value, that is named.
template <typename Choices>
auto Choose(const char* option, const char* name, const Choices& choices) {
    std::string expected;
    for (const auto& [known, value] : choices) {
        if (std::strcmp(name, known) == 0) return value;
        expected += (expected.empty() ? "" : ", ") + std::string(known);
    }
    throw Problem(std::string(option) + " " + name + " is not known; expected " + expected,
                  ProblemKind::usage);
}

void SetDithering(Options& options, const char* value) {
    using enum Dithering;
    constexpr std::pair<const char*, Dithering> kKinds[] = {
        {"diffusion", diffusion}, {"ordered", ordered}, {"blue-noise", blueNoise}, {"none", none}};
    options.wishes.dithering = Choose("--dither", value, kKinds);
}

void SetPrintedPalette(Options& options, const char* value) {
    using enum PaletteFormat;
    constexpr std::pair<const char*, PaletteFormat> kFormats[] = {
        {"gpl", gpl}, {"hex", hex}, {"jasc", jasc}, {"act", act}};
    options.printedPalette = Choose("--print-palette", value, kFormats);
}

void AddKeptColors(Options& options, const char* value) {
    for (const std::string& name : SplitList(value)) {
        const RGBtuple color = ParseColor(name);
        options.wishes.keptColors.push_back({color.red, color.green, color.blue});
    }
}

void AddEntries(Options& options, const char* value) {
    for (const std::string& name : SplitList(value)) {
        const auto color = ParseHexColor(name);
        const auto number = ParseNumber(name);
        if (!color && !number)
            throw Problem("\"" + name + "\" is no entry; expected a number or #rrggbb",
                          ProblemKind::usage);
        options.wishes.transparent.push_back(color ? EntryName(*color) : EntryName(*number));
    }
}

void AddChannel(Options& options, const char* value) {
    const std::string text = value;
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        throw Problem("--channel " + text + " is not understood; expected NAME=FILE",
                      ProblemKind::usage);
    options.channels.push_back({text.substr(0, equals), text.substr(equals + 1)});
    options.wishes.channels.push_back(options.channels.back().name);
}

void SetRequirement(Options& options, const char* value) {
    const std::string text = value, limit = "max-error=";
    if (text == "lossless")
        options.required.lossless = true;
    else if (text.starts_with(limit))
        options.required.largestError =
            ParseInRange("--require max-error", text.substr(limit.size()), 0, 255);
    else
        throw Problem("--require " + text + " is not known; expected lossless or max-error=N",
                      ProblemKind::usage);
}

void SetReport(Options& options, const char* value) {
    if (std::strcmp(value, "json") != 0)
        throw Problem(std::string("--report ") + value + " is not known; expected json",
                      ProblemKind::usage);
    options.json = true;
}

constexpr Option kOutputOptions[] = {
    {'o', "output", "FILE", file, nullptr, "write FILE; - is standard output",
     [](Options& o, const char* value) { o.output = NotEmpty("-o", value); }},
    {'O', "output-folder", "DIR", folder, nullptr, "write into DIR under the input's name",
     [](Options& o, const char* value) { o.outputFolder = NotEmpty("-O", value); }},
    {'f', "force", nullptr, none, nullptr,
     "replace existing files; an input only by its own GIF, and only where nothing is lost",
     [](Options& o, const char*) { o.force = true; }},
    {0, "sync", nullptr, none, nullptr,
     "force new files and their folder to the disk too, not only files that replace others",
     [](Options& o, const char*) { o.sync = true; }},
    {0, "require", "WHAT", choice, "lossless max-error=",
     "write nothing, and exit with 3, unless the file is lossless, or no channel of a pixel is off "
     "by more than N with max-error=N",
     SetRequirement},
};

constexpr Option kWayOptions[] = {
    {0, "mode", "MODE", choice, "rgb indexed",
     "rgb: let the module reduce the colours; indexed: keep the picture's own. Without it a "
     "picture keeps its colours where they fit, and is reduced to the best ones else",
     SetMode},
    {'n', "colors", "N", text, nullptr,
     "at most N colours, 2 to 256; with transparency its entry is among 256",
     [](Options& o, const char* value) { o.wishes.colors = ParseInRange("-n", value, 2, 256); }},
    {0, "dither", "KIND", choice, "diffusion ordered blue-noise none",
     "how colours between those of the palette are mixed; diffusion is the usual way",
     SetDithering},
    {0, "dither-amount", "N", text, nullptr, "strength of the mixing, 0 to 100 (the usual one)",
     [](Options& o, const char* value) {
         o.wishes.ditherAmount = ParseInRange("--dither-amount", value, 0, 100);
     }},
    {0, "keep-color", "LIST", text, nullptr,
     "colours that the palette has in any case: #rrggbb with commas between", AddKeptColors},
    {'p', "palette", "PALETTE", file, nullptr,
     "best (the usual one), fixed, web, grey, a palette file of any known kind, or the colours of "
     "a picture; of more than N entries with -n the N that suit best. With --mode rgb exact, "
     "adaptive, fixed, or a file .zco, .zct or .pal",
     SetPalette},
    {0, "print-palette", "FORMAT", choice, "gpl hex jasc act",
     "export nothing; print the palette that the picture would be exported with, as a GIMP "
     "palette, a list of hexadecimal colours, a JASC palette or an Adobe colour table",
     SetPrintedPalette},
    {0, "resize", nullptr, none, nullptr,
     "with --mode rgb: cut a fixed or loaded palette to -n colours",
     [](Options& o, const char*) { o.wishes.resize = true; }},
    {0, "no-orient", nullptr, none, nullptr, "leave a picture as it is stored, turned or not",
     [](Options& o, const char*) { o.orient = false; }},
};

constexpr Option kTransparencyOptions[] = {
    {0, "alpha-threshold", "N", text, nullptr,
     "opacity below N (1 to 255) is transparent, all other opaque",
     [](Options& o, const char* value) {
         o.wishes.alphaThreshold = ParseInRange("--alpha-threshold", value, 1, 255);
     }},
    {0, "opaque", nullptr, none, nullptr, "no transparency; what was transparent gets the matte",
     [](Options& o, const char*) { o.wishes.opaque = true; }},
    {0, "matte", "COLOR", text, nullptr, "colour behind transparency: #rrggbb or r,g,b",
     [](Options& o, const char* value) { o.wishes.matte = ParseColor(value); }},
    {0, "transparent", "LIST", text, nullptr,
     "indexed: entries to hide beside what is transparent already, by number or as #rrggbb, with "
     "commas between",
     AddEntries},
    {0, "alpha", "CHANNEL", text, nullptr,
     "indexed: hide what this channel hides, by name or number",
     [](Options& o, const char* value) { o.wishes.alpha = NotEmpty("--alpha", value); }},
    {0, "invert", nullptr, none, nullptr, "indexed: the channel hides where it is bright",
     [](Options& o, const char*) { o.wishes.invert = true; }},
    {0, "channel", "NAME=FILE", text, nullptr, "indexed: add a grey picture as a channel",
     AddChannel},
};

constexpr Option kFileOptions[] = {
    {0, "interlace", nullptr, none, nullptr, "store the rows in four passes (the usual way)",
     [](Options& o, const char*) { o.wishes.interlace = true; }},
    {0, "no-interlace", nullptr, none, nullptr, "store the rows from top to bottom",
     [](Options& o, const char*) { o.wishes.interlace = false; }},
    {0, "comment", "TEXT", text, nullptr, "write TEXT as the file's comment",
     [](Options& o, const char* value) { o.wishes.commentText = value; }},
    {0, "no-comment", nullptr, none, nullptr, "leave out the picture's comment",
     [](Options& o, const char*) { o.wishes.commentText = ""; }},
};

constexpr Option kReportOptions[] = {
    {'v', "verbose", nullptr, none, nullptr, "say what became of each picture",
     [](Options& o, const char*) { o.verbose = true; }},
    {0, "report", "FORMAT", choice, "json",
     "json: one JSON object for each input, a line each, on standard output", SetReport},
    {0, "report-file", "FILE", file, nullptr,
     "write the JSON report to FILE instead, when all inputs are done",
     [](Options& o, const char* value) {
         o.json = true;
         o.reportFile = NotEmpty("--report-file", value);
     }},
    {'q', "quiet", nullptr, none, nullptr, "say nothing but errors",
     [](Options& o, const char*) { o.quiet = true; }},
};

constexpr Option kOtherOptions[] = {
    {0, "window", nullptr, none, nullptr,
     "ask in a window, with a preview; it opens with the options given here",
     [](Options& o, const char*) { o.window = o.wishes.leavesToModule = true; }},
    {'h', "help", nullptr, none, nullptr, "show this help",
     [](Options& o, const char*) { o.help = true; }},
    {0, "version", nullptr, none, nullptr, "show the version",
     [](Options& o, const char*) { o.version = true; }},
    {0, "about", nullptr, none, nullptr, "say what this is; with --window in a window",
     [](Options& o, const char*) { o.about = true; }},
};

constexpr OptionGroup kGroups[] = {
    {"Output", kOutputOptions}, {"Colours", kWayOptions},   {"Transparency", kTransparencyOptions},
    {"File", kFileOptions},     {"Report", kReportOptions}, {"Other", kOtherOptions}};

// What getopt_long answers for a long option: its place in the table, above all letters.
constexpr int kFirstPlace = 256;

// The long options that a word like --out or --out=x may stand for.
std::vector<std::string> NamesBeginning(const std::string& word) {
    const std::string start = word.substr(2, word.find('=') - 2);
    std::vector<std::string> names;
    for (const OptionGroup& group : kGroups)
        for (const Option& each : group.options)
            if (std::string_view(each.name).starts_with(start))
                names.push_back(std::string("--") + each.name);
    return names;
}

std::string DescribeRefused(int answer, char** argv) {
    if (optopt != 0 && optopt < kFirstPlace)
        return std::string("option -") + static_cast<char>(optopt) +
               (answer == ':' ? " needs a value" : " is not known");
    const std::string word = argv[optind - 1], option = "option " + word;
    if (answer == ':') return option + " needs a value";
    if (optopt != 0) return option + " takes no value";
    const std::vector<std::string> names = NamesBeginning(word);
    if (names.empty()) return option + " is not known";
    std::string list = names.front();
    for (std::size_t i = 1; i < names.size(); ++i)
        list += (i + 1 == names.size() ? " or " : ", ") + names[i];
    return option + " is ambiguous; it may be " + list;
}

// Applies the options in their order; what is left are the inputs.
void ApplyOptions(int argc, char** argv, Options& options) {
    // Options are told apart by their place in `all`, for those with a letter as well.
    std::string letters = ":";
    std::vector<const Option*> all;
    std::vector<option> names;
    for (const OptionGroup& group : kGroups)
        for (const Option& each : group.options) {
            if (each.letter != 0) letters += each.letter;
            if (each.letter != 0 && each.argument) letters += ':';
            names.push_back({each.name, each.argument ? required_argument : no_argument, nullptr,
                             kFirstPlace + static_cast<int>(all.size())});
            all.push_back(&each);
        }
    names.push_back({});

    opterr = 0;
    optind = 0; // start anew, whatever was parsed before
    int answer;
    while ((answer = getopt_long(argc, argv, letters.c_str(), names.data(), nullptr)) != -1) {
        if (answer == '?' || answer == ':')
            throw Problem(DescribeRefused(answer, argv), ProblemKind::usage);
        const auto found = std::find_if(all.begin(), all.end(), [answer, &all](auto& each) {
            return answer == each->letter ||
                   answer == kFirstPlace + static_cast<int>(&each - all.data());
        });
        (*found)->apply(options, optarg);
    }
    options.inputs.assign(argv + optind, argv + argc);
}

void CheckTogether(const Options& options) {
    const Wishes& wishes = options.wishes;
    const int ways = (wishes.transparent.empty() ? 0 : 1) + (wishes.alpha.empty() ? 0 : 1) +
                     (wishes.opaque ? 1 : 0);
    const struct {
        bool wrong;
        const char* sentence;
    } rules[] = {
        {ways > 1, "--transparent, --alpha and --opaque exclude each other"},
        {options.inputs.empty(), "no input given; see --help"},
        {std::count(options.inputs.begin(), options.inputs.end(), "") > 0,
         "the name of an input is empty"},
        {!options.output.empty() && !options.outputFolder.empty(), "-o and -O exclude each other"},
        {!options.output.empty() && options.inputs.size() > 1,
         "-o takes one input; -O DIR takes many"},
        {!wishes.keptColors.empty() && wishes.palette != PaletteKind::open &&
             wishes.palette != PaletteKind::best,
         "--keep-color is for the best palette; others have the colours that they have"},
        {options.printedPalette && (wishes.mode == Mode::rgb || options.window || options.json ||
                                    !options.output.empty() || !options.outputFolder.empty() ||
                                    options.inputs.size() > 1),
         "--print-palette takes one input and excludes --mode rgb, --window, --report, -o and -O"},
        {std::count(options.inputs.begin(), options.inputs.end(), "-") > 1,
         "standard input can be read once only"},
    };
    for (const auto& rule : rules)
        if (rule.wrong) throw Problem(rule.sentence, ProblemKind::usage);
}

} // namespace

std::span<const OptionGroup> TheOptionGroups() {
    return kGroups;
}

Options ParseOptions(int argc, char** argv) {
    Options options;
    ApplyOptions(argc, argv, options);
    if (options.help || options.version || options.about) return options;
    CheckTogether(options);
    return options;
}

} // namespace gif89
