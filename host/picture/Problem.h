// What went wrong, in one sentence for the user, and the exit code it deserves.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

namespace gif89 {

/// Exit codes of our programs.
enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2, kNotMet = 3 };

/// What the user may do about it, where that is known. A command line names options and a window
/// its commands, so each program has its own words for it.
enum class Remedy : std::uint8_t {
    none,
    replaceFile, ///< let the existing file be replaced
    nameOther,   ///< give the new file another name
    reduce,      ///< choose the colours anew instead of keeping the picture's table
    nameChannel, ///< say which channel is to be inverted
    namePalette, ///< say which palette is to be cut
    leaveCount,  ///< give no number of colours
};

/// Thrown by the host's code; never crosses the module's boundary. The sentence says what is
/// wrong, where, and what was expected. It names no file: the catcher knows the one it is about,
/// unless the problem says that it is another.
class Problem : public std::runtime_error {
  public:
    explicit Problem(const std::string& sentence, ExitCode code = kFailed,
                     Remedy remedy = Remedy::none)
        : std::runtime_error(sentence), exitCode(code), cure(remedy) {}

    /// The same about that file, unless it is about a file already.
    Problem About(const std::string& path) const {
        Problem named = *this;
        if (named.file.empty()) named.file = path;
        return named;
    }

    ExitCode Code() const { return exitCode; }
    Remedy Cure() const { return cure; }
    const std::string& File() const { return file; } ///< empty when the catcher knows it

  private:
    ExitCode exitCode;
    Remedy cure;
    std::string file;
};

/// A Problem of the file that is written, not of the one that is read.
class OutputProblem : public Problem {
  public:
    using Problem::Problem;
};

/// The system's reason for an error, in English whatever the locale.
inline std::string SystemReason(int error = errno) {
    const char* const reason = strerrordesc_np(error);
    return reason ? reason : "error " + std::to_string(error) + " of the system";
}

/// What an exception says to the user: a Problem's own sentence, the system's reason, or that
/// memory was short.
std::string SentenceOf(const std::exception& exception);

} // namespace gif89
