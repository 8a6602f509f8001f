#include "Terminal.h"

#include "CommentText.h"
#include "Streams.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace gif89 {
namespace {

constexpr char kProgram[] = "gif89: ";
constexpr char kRed[] = "\x1b[1;31m", kYellow[] = "\x1b[1;33m", kPlain[] = "\x1b[0m";
constexpr char kClearLine[] = "\r\x1b[K";
constexpr std::size_t kLongestName = 40; // columns of progress for the file's name

bool MovesItsCursor() {
    const char* const terminal = std::getenv("TERM");
    return terminal && std::strcmp(terminal, "dumb") != 0;
}

bool AllowsColor() {
    const char* const forbidden = std::getenv("NO_COLOR");
    return !forbidden || *forbidden == '\0';
}

} // namespace

Terminal::Terminal(std::size_t inputCount)
    : inputs(inputCount), onTerminal(isatty(STDERR_FILENO)), moves(onTerminal && MovesItsCursor()),
      inColor(moves && AllowsColor()) {}

void Terminal::Error(const std::string& sentence) {
    Print(kRed, {}, sentence);
}

void Terminal::Error(const std::string& file, const std::string& sentence) {
    Print(kRed, file + ": ", sentence);
}

void Terminal::Warning(const std::string& file, const std::string& sentence) {
    Print(kYellow, file + ": warning: ", sentence);
}

void Terminal::Say(const std::string& line) {
    Clear();
    WriteAll(STDERR_FILENO, Shown(line) + "\n");
}

void Terminal::Print(const char* color, const std::string& label, const std::string& rest) {
    Clear();
    const std::string before = kProgram + Shown(label);
    WriteAll(STDERR_FILENO, (inColor ? color + before + kPlain : before) + Shown(rest) + "\n");
}

std::string Terminal::Shown(const std::string& text) const {
    return onTerminal ? TerminalText(text) : text;
}

void Terminal::ShowProgress(std::size_t index, const std::string& file, const char* step) {
    using namespace std::chrono_literals;
    if (!moves || std::chrono::steady_clock::now() - start < 1s) return;
    Clear();
    std::size_t cut = file.size() > kLongestName ? file.size() - kLongestName : 0;
    while ((file[cut] & 0xC0) == 0x80) ++cut; // not inside a character
    WriteAll(STDERR_FILENO, std::to_string(index + 1) + " of " + std::to_string(inputs) + ": " +
                                (cut ? "..." : "") + Shown(file.substr(cut)) + ", " + step);
    shown = true;
}

void Terminal::Clear() {
    if (shown) WriteAll(STDERR_FILENO, kClearLine);
    shown = false;
}

} // namespace gif89
