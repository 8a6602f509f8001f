// What went wrong, in one sentence for the user, and the exit code it deserves.
#pragma once

#include <stdexcept>
#include <string>

namespace gif89 {

/// Exit codes of our programs.
enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2, kNotMet = 3 };

/// Thrown by the host's code; never crosses the module's boundary. The sentence says what is
/// wrong, where, and what was expected; it names no file, since the catcher knows which one it is.
class Problem : public std::runtime_error {
  public:
    explicit Problem(const std::string& sentence, ExitCode code = kFailed)
        : std::runtime_error(sentence), exitCode(code) {}
    ExitCode Code() const { return exitCode; }

  private:
    ExitCode exitCode;
};

} // namespace gif89
