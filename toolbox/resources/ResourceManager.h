// Reads classic resource files: header, data, map with type list, reference lists and names.
#pragma once

#include "MemoryManager.h"

#include <mutex>
#include <string>

#pragma GCC visibility push(default)

/// Loads a resource file; the last one opened is searched first. Its resources live as handles
/// until CloseResFile. A reference number above 0, or a negative code: resFNotFound when the file
/// cannot be read, mapReadErr when it is no resource file, memFullErr.
std::int16_t OpenResFile(const std::string& path);

/// Frees every resource of the file; no thread may still use one.
void CloseResFile(std::int16_t refNum);

/// The resource, or null when no open file has it. The handle belongs to the Resource Manager; its
/// bytes may be changed in memory.
Handle GetResource(OSType type, std::int16_t id);

/// A resource need not be kept any longer; handles stay valid until the file is closed.
inline void ReleaseResource(Handle) {}

/// All threads share the bytes of a resource. Held by whoever changes them, and by whoever reads
/// what may be changed: the bounds of a dialog, which CenterDialog writes.
std::mutex& ResourceBytesLock();

/// Copies string `index` (from 1) of string list `list` as a length-prefixed string; the empty
/// string when there is no such list or string.
void GetIndString(StringPtr string, std::int16_t list, std::int16_t index);

#pragma GCC visibility pop
