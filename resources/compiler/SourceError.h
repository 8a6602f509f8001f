// Where a statement stands, and what is wrong there.
#pragma once

#include <stdexcept>
#include <string>

namespace gif89 {

struct Place {
    std::string file;
    int line = 0; ///< from 1

    std::string Text() const { return file + ":" + std::to_string(line); }
};

/// "file:line: what is wrong, what was expected".
struct SourceError : std::runtime_error {
    SourceError(const Place& place, const std::string& problem)
        : std::runtime_error(place.Text() + ": " + problem) {}
};

} // namespace gif89
