// What went wrong, in one sentence for the user, and of what kind it is.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

namespace gif89 {

/// Exit codes of our programs.
enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2, kNotMet = 3 };

/// What a program may want to tell apart, for its exit code and for advice in its own words.
enum class ProblemKind : std::uint8_t {
    failed,
    usage,
    notMet,      ///< a condition that was set
    cancelled,   ///< by the user
    fileExists,  ///< where it was not to be replaced
    fileIsInput, ///< that is read, and would be written
};

/// Thrown by the host's code; never crosses the module's boundary. The sentence says what is
/// wrong, where, and what was expected. It names no file: the catcher knows the one it is about,
/// unless the problem says that it is another.
class Problem : public std::runtime_error {
  public:
    explicit Problem(const std::string& sentence, ProblemKind kindOfProblem = ProblemKind::failed)
        : std::runtime_error(sentence), kind(kindOfProblem) {}

    /// The same about that file, unless it is about a file already.
    Problem About(const std::string& path) const {
        Problem named = *this;
        if (named.file.empty()) named.file = path;
        return named;
    }

    ProblemKind Kind() const { return kind; }
    ExitCode Code() const;
    const std::string& File() const { return file; } ///< empty when the catcher knows it

  private:
    ProblemKind kind;
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
