// The process-wide table behind directory ids: real folders, and the short aliases of long names in
// them. Names and paths are bytes; nothing here looks at an encoding except where an alias is cut.
#pragma once

#include "Descriptor.h"

#include <cstdint>
#include <string>

#pragma GCC visibility push(default)

/// Enters an existing folder and returns its id, always the same above 0 for the same folder.
/// 0 with errno set when it does not exist or cannot be reached.
std::int32_t EnterFolder(const std::string& path);

/// The folder's absolute path, which later changes of the working folder leave alone; empty for an
/// unknown id.
std::string FolderPath(std::int32_t folder);

/// A name of at most 63 bytes: the name itself, or the alias of a longer one. An alias holds a
/// slash, as no real name can, and keeps the readable beginning and the extension.
std::string ShortName(std::int32_t folder, const std::string& name);

/// The name behind a short one; empty when no file can have it: empty, "." or "..", with a zero
/// byte, or with a slash and no alias of this folder.
std::string RealName(std::int32_t folder, const std::string& shortName);

/// Path of a name in a folder.
std::string JoinPath(const std::string& folderPath, const std::string& name);

/// Opens a folder as a starting point for calls relative to it. The path may be longer than the
/// system takes in one call. Not open, with errno set, on failure.
Descriptor OpenFolder(const std::string& path);

#pragma GCC visibility pop
