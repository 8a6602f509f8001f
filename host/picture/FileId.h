// Which file a path or descriptor leads to, however it is named.
#pragma once

#include <compare>
#include <optional>
#include <string>

#include <sys/types.h>

namespace gif89 {

struct FileId {
    dev_t device;
    ino_t number;
    auto operator<=>(const FileId&) const = default;
};

/// Of a regular file, through links; none for anything else, and where there is nothing.
std::optional<FileId> FileIdOf(const std::string& path);
std::optional<FileId> FileIdOf(int descriptor);

} // namespace gif89
