// What the program says on standard error: messages, and a line of progress on a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace gif89 {

/// Messages are "gif89: file: sentence", coloured on a terminal unless NO_COLOR forbids it.
/// On a terminal, names and texts are shown with escapes for what would act on it. Nothing is said
/// of what standard error does not take.
class Terminal {
  public:
    /// Progress counts to `inputs`.
    explicit Terminal(std::size_t inputs);
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() { Clear(); }

    void Error(const std::string& sentence);
    void Error(const std::string& file, const std::string& sentence);
    void Warning(const std::string& file, const std::string& sentence);
    /// Prints a line, given without its end.
    void Say(const std::string& line);

    /// Shows that input number `index` (from 0) is being worked on, when this is a terminal and the
    /// job has lasted a second.
    void ShowProgress(std::size_t index, const std::string& file, const char* step);

  private:
    void Print(const char* color, const std::string& label, const std::string& rest);
    std::string Shown(const std::string& text) const;
    void Clear();

    const std::size_t inputs;
    const bool onTerminal;
    const bool moves; ///< a line can be written over
    const bool inColor;
    bool shown = false; ///< a line of progress is on the screen
    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

} // namespace gif89
