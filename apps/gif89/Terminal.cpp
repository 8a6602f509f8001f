#include "Terminal.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace gif89 {
namespace {

constexpr char kProgram[] = "gif89: ";
constexpr char kRed[] = "\x1b[1;31m", kYellow[] = "\x1b[1;33m", kPlain[] = "\x1b[0m";
constexpr char kClearLine[] = "\r\x1b[K";
constexpr std::size_t kLongestName = 40; // columns of progress for the file's name

bool IsTerminal() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDERR_FILENO) && terminal && std::strcmp(terminal, "dumb") != 0;
}

bool AllowsColor() {
    const char* const forbidden = std::getenv("NO_COLOR");
    return !forbidden || *forbidden == '\0';
}

} // namespace

Terminal::Terminal(std::size_t inputCount)
    : inputs(inputCount), onTerminal(IsTerminal()), inColor(onTerminal && AllowsColor()) {}

void Terminal::Error(const std::string& file, const std::string& sentence) {
    Print(kRed, file + ": ", sentence);
}

void Terminal::Warning(const std::string& file, const std::string& sentence) {
    Print(kYellow, file + ": warning: ", sentence);
}

void Terminal::Say(const std::string& text) {
    Clear();
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void Terminal::Print(const char* color, const std::string& label, const std::string& rest) {
    Say(inColor ? color + (kProgram + label) + kPlain + rest + "\n"
                : kProgram + label + rest + "\n");
}

void Terminal::ShowProgress(std::size_t index, const std::string& file, const char* step) {
    using namespace std::chrono_literals;
    if (!onTerminal || std::chrono::steady_clock::now() - start < 1s) return;
    Clear();
    const std::size_t cut = file.size() > kLongestName ? file.size() - kLongestName : 0;
    std::fprintf(stderr, "%zu of %zu: %s%s, %s", index + 1, inputs, cut ? "..." : "",
                 file.c_str() + cut, step);
    shown = true;
}

void Terminal::Clear() {
    if (shown) std::fputs(kClearLine, stderr);
    shown = false;
}

} // namespace gif89
