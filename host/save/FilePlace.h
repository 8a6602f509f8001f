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

/// Finds the place of a file, of any bytes and any length. A symbolic link stands for the place it
/// leads to, whether anything is there or not. Throws OutputProblem when the folder cannot be
/// reached, or the link not be followed.
FilePlace FindPlace(const std::string& path);

/// Tells places apart, however their paths are spelt.
struct PlaceId {
    dev_t device = 0;
    ino_t folder = 0;
    std::string name;
    auto operator<=>(const PlaceId&) const = default;
};
PlaceId Identify(const FilePlace& place);

/// Whether both paths lead to one file or, where there is none yet, to one place. A character
/// device is nobody's file, since what is written there replaces nothing.
bool LeadToOneFile(const std::string& one, const std::string& other);

} // namespace gif89
