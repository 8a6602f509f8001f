#include "Usage.h"

#include "Options.h"

#include <cstdio>
#include <string_view>

namespace gif89 {
namespace {

constexpr char kPurpose[] = "save pictures as GIF89a files, and tell what was lost";

constexpr std::string_view kDescription[] = {
    "Each INPUT becomes a GIF89a file beside it, of the same name with the suffix .gif. PNG, JPEG, "
    "WebP, TIFF, GIF, BMP, PGM, PPM and PAM pictures are read, told apart by their content; of "
    "several pictures in a file the first is taken. INPUT - is standard input; its GIF goes to "
    "standard output unless -o or -O says otherwise.",
    "Palette and grey pictures keep their indices and their table. Other pictures do not lose a "
    "pixel either when they have at most 256 colours (255 when some pixels are transparent) and no "
    "opacity between all and none. All others are reduced to a palette, with error diffusion.",
    "Every file is decoded and compared with its picture before it takes its place; an old file "
    "stays whole until then. What was lost is said in one line on standard error.",
};

constexpr struct {
    const char* command;
    const char* meaning;
} kExamples[] = {
    {"gif89 photo.jpg", "write photo.gif, 256 colours"},
    {"gif89 -O web *.png", "many pictures into a folder"},
    {"gif89 -v -n 32 photo.jpg -o small.gif", "32 colours, and a report"},
    {"gif89 -p brand.gpl photo.jpg", "the colours of a palette file, or of a picture"},
    {"gif89 --print-palette gpl photo.jpg > photo.gpl", "keep a palette for others"},
    {"gif89 --transparent '#ff00ff' sprite.png", "hide a colour"},
    {"gif89 --alpha-threshold 64 logo.webp", "keep faint edges"},
    {"gif89 --opaque --matte '#336699' logo.webp -o flat.gif", "lay it over a colour"},
    {"gif89 --require lossless -O web icons/*.png", "write only exact copies"},
    {"gif89 --report json -q -O web *.png > report.jsonl", "one JSON object a line"},
    {"gif89 - < photo.jpg > piped.gif", "between pipes"},
};

constexpr struct {
    int code;
    const char* meaning;
} kExitCodes[] = {
    {0, "all was written"},
    {1, "some input could not be read, or some file not written"},
    {2, "wrong usage, or a choice that a picture does not allow"},
    {3, "a condition of --require was not met"},
};
constexpr char kExitRule[] = "With many inputs the others go on, and the highest code counts.";

template <typename Visit> void ForEachOption(Visit visit) {
    for (const OptionGroup& group : TheOptionGroups())
        for (const Option& option : group.options) visit(option);
}

/// Breaks a text into lines that start after `indent` columns; the first line's start is the
/// caller's.
std::string Wrap(std::string_view text, std::size_t indent) {
    constexpr std::size_t kColumns = 79;
    std::string wrapped;
    std::size_t column = indent;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(text.size(), word.size() + 1));
        if (column > indent && column + 1 + word.size() > kColumns) {
            wrapped += '\n';
            wrapped.append(indent, ' ');
            column = indent;
        } else if (column > indent) {
            wrapped += ' ';
            ++column;
        }
        wrapped += word;
        column += word.size();
    }
    return wrapped + "\n";
}

std::string Padded(const std::string& text, std::size_t columns) {
    if (text.size() < columns) return text + std::string(columns - text.size(), ' ');
    return text + "\n" + std::string(columns, ' ');
}

std::string Spelling(const Option& option) {
    std::string text = option.letter ? std::string("-") + option.letter + ", " : "    ";
    text += std::string("--") + option.name;
    return option.argument ? text + "=" + option.argument : text;
}

// A text in the man macros: what they would take for their own is made plain.
std::string Roff(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else if (c == '\'')
            escaped += "\\(aq";
        else
            escaped += c;
    }
    return escaped.starts_with('.') ? "\\&" + escaped : escaped;
}

// In single quotes for a shell; `quote` is how one is written inside.
std::string Quoted(std::string_view text, const char* quote) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'')
            quoted += quote;
        else
            quoted += c;
    }
    return quoted + "'";
}

// Brackets and colons mean something where zsh describes an option.
std::string ZshText(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string ZshValue(const Option& option) {
    const std::string name = std::string(":") + option.argument + ":";
    switch (option.valueKind) {
    case ValueKind::file:
        return name + "_files";
    case ValueKind::folder:
        return name + "_files -/";
    case ValueKind::choice:
        return name + "(" + option.values + ")";
    case ValueKind::none:
    case ValueKind::text:
        return name + " ";
    }
    return {};
}

} // namespace

std::string HelpText() {
    constexpr std::size_t kHelpColumn = 30;
    std::string text = "Usage: gif89 [OPTION]... [--] INPUT...\n";
    for (const std::string_view paragraph : kDescription) text += Wrap(paragraph, 0) + "\n";
    for (const OptionGroup& group : TheOptionGroups()) {
        text += std::string(group.heading) + ":\n";
        for (const Option& option : group.options)
            text += Padded("  " + Spelling(option), kHelpColumn) + Wrap(option.help, kHelpColumn);
        text += "\n";
    }
    text += "Examples:\n";
    for (const auto& example : kExamples)
        text += std::string("  ") + example.command + "\n      " + example.meaning + "\n";
    text += "\nExit status:\n";
    for (const auto& entry : kExitCodes)
        text += "  " + std::to_string(entry.code) + "  " + entry.meaning + "\n";
    return text + Wrap(kExitRule, 0);
}

std::string ManualPage() {
    std::string text = ".TH GIF89 1 \"\" \"gif89 " GIF89_VERSION "\" \"User Commands\"\n"
                       ".SH NAME\ngif89 \\- " +
                       Roff(kPurpose) +
                       "\n.SH SYNOPSIS\n.B gif89\n[\\fIOPTION\\fR]... [\\-\\-] "
                       "\\fIINPUT\\fR...\n.SH DESCRIPTION\n";
    for (const std::string_view paragraph : kDescription) text += ".PP\n" + Roff(paragraph) + "\n";
    text += ".SH OPTIONS\n";
    for (const OptionGroup& group : TheOptionGroups()) {
        text += std::string(".SS ") + group.heading + "\n";
        for (const Option& option : group.options) {
            text += ".TP\n";
            if (option.letter) text += std::string("\\fB\\-") + option.letter + "\\fR, ";
            text += std::string("\\fB\\-\\-") + option.name + "\\fR";
            if (option.argument) text += std::string("=\\fI") + option.argument + "\\fR";
            text += '\n';
            text += Roff(option.help) + '\n';
        }
    }
    text += ".SH EXAMPLES\n";
    for (const auto& example : kExamples)
        text += ".TP\n\\fB" + Roff(example.command) + "\\fR\n" + Roff(example.meaning) + "\n";
    text += ".SH \"EXIT STATUS\"\n";
    for (const auto& entry : kExitCodes)
        text += ".TP\n\\fB" + std::to_string(entry.code) + "\\fR\n" + Roff(entry.meaning) + "\n";
    text += ".PP\n" + Roff(kExitRule) + "\n";
    return text + ".SH ENVIRONMENT\n.TP\n\\fBNO_COLOR\\fR\nwhen set and not empty, messages on a "
                  "terminal are not coloured\n";
}

std::string BashCompletion() {
    std::string names, files, folders, choices;
    ForEachOption([&](const Option& option) {
        const std::string name = std::string("--") + option.name;
        const std::string pattern =
            option.letter ? std::string("-") + option.letter + "|" + name : name;
        names += " " + name + (option.argument ? "=" : "");
        if (option.letter) names += std::string(" -") + option.letter;
        if (option.valueKind == ValueKind::file) files += (files.empty() ? "" : "|") + pattern;
        if (option.valueKind == ValueKind::folder)
            folders += (folders.empty() ? "" : "|") + pattern;
        if (option.valueKind == ValueKind::choice)
            choices += "        " + pattern + ") COMPREPLY=($(compgen -W '" + option.values +
                       "' -- \"$cur\")); return ;;\n";
    });
    return "# bash completion for gif89\n"
           "_gif89() {\n"
           "    local cur prev words cword split\n"
           "    _init_completion -s || return\n"
           "    case $prev in\n"
           "        " +
           files + ") _filedir; return ;;\n        " + folders + ") _filedir -d; return ;;\n" +
           choices +
           "    esac\n"
           "    $split && return\n"
           "    if [[ $cur == -* ]]; then\n"
           "        COMPREPLY=($(compgen -W '" +
           names.substr(1) +
           "' -- \"$cur\"))\n"
           "        [[ ${COMPREPLY-} == *= ]] && compopt -o nospace\n"
           "        return\n"
           "    fi\n"
           "    _filedir\n"
           "}\n"
           "complete -F _gif89 gif89\n";
}

std::string ZshCompletion() {
    std::string text = "#compdef gif89\n_arguments -s -S \\\n";
    ForEachOption([&](const Option& option) {
        const std::string help = std::string("[") + ZshText(option.help) + "]";
        const std::string value = option.argument ? ZshValue(option) : "";
        const auto line = [&](const std::string& spelling) {
            text += "  " + Quoted(std::string("*") + spelling + help + value, "'\\''") + " \\\n";
        };
        if (option.letter) line(std::string("-") + option.letter + (option.argument ? "+" : ""));
        line(std::string("--") + option.name + (option.argument ? "=" : ""));
    });
    return text + "  '*:picture:_files'\n";
}

std::string FishCompletion() {
    std::string text = "# fish completion for gif89\n";
    ForEachOption([&](const Option& option) {
        text += "complete -c gif89";
        if (option.letter) text += std::string(" -s ") + option.letter;
        text += std::string(" -l ") + option.name;
        switch (option.valueKind) {
        case ValueKind::none:
            break;
        case ValueKind::text:
            text += " -x";
            break;
        case ValueKind::file:
            text += " -r -F";
            break;
        case ValueKind::folder:
            text += " -x -a '(__fish_complete_directories)'";
            break;
        case ValueKind::choice:
            text += " -x -a " + Quoted(option.values, "\\'");
        }
        text += " -d " + Quoted(option.help, "\\'") + "\n";
    });
    return text;
}

} // namespace gif89
