// Where a path leads, also when no file is there yet.
#pragma once

#include "Descriptor.h"

#include <compare>
#include <string>

#include <sys/types.h>

namespace gif89 {

/// A name in an open folder.
struct FilePlace {
    std::string path; ///< as it was given, or where the symbolic link of that path leads
    Descriptor folder;
    std::string name; ///< empty where the path ends in a slash
};

/// Finds the place of a file; its path may have any bytes and any length. A symbolic link stands
/// for the place it leads to, whether a file exists there or not. Throws OutputProblem when the
/// folder cannot be reached or the link cannot be followed.
FilePlace FindPlace(const std::string& path);

/// Tells places apart, however their paths are spelt.
struct PlaceId {
    dev_t device = 0;
    ino_t folder = 0;
    std::string name;
    auto operator<=>(const PlaceId&) const = default;
};
PlaceId Identify(const FilePlace& place);

/// Whether both paths lead to the same file or, if it does not exist yet, to the same place. False
/// for a character device, because writing there replaces nothing.
bool LeadToOneFile(const std::string& one, const std::string& other);

} // namespace gif89
