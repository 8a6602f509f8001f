#include "Problem.h"

#include <filesystem>
#include <new>
#include <system_error>

namespace gif89 {

ExitCode Problem::Code() const {
    switch (kind) {
    case ProblemKind::usage:
    case ProblemKind::fileIsInput:
        return kUsage;
    case ProblemKind::notMet:
        return kNotMet;
    default:
        return kFailed;
    }
}

std::string SentenceOf(const std::exception& exception) {
    if (dynamic_cast<const std::bad_alloc*>(&exception)) return "there is not enough memory";
    if (const auto* const file = dynamic_cast<const std::filesystem::filesystem_error*>(&exception))
        return file->path1().string() + ": " + SystemReason(file->code().value());
    if (const auto* const system = dynamic_cast<const std::system_error*>(&exception))
        return SystemReason(system->code().value());
    return exception.what();
}

} // namespace gif89
