// The standard streams and others that are written to as they are.
#pragma once

#include <string>
#include <string_view>

#include <sys/types.h>

namespace gif89 {

/// For the start of a program: whichever of the descriptors 0 to 2 is closed stays unusable, but
/// its number is taken, so that no file gets it and is written to as if it were the stream.
void OccupyStandardStreams();

/// Reads up to `count` bytes as read(2) does, but waits where a stream is set not to.
ssize_t ReadSome(int descriptor, void* bytes, std::size_t count);

/// Writes all bytes, and waits where a stream is set not to. False, with errno, when it fails.
bool WriteAll(int descriptor, std::string_view bytes);

/// Writes a text to standard output; throws Problem when that fails.
void WriteToStandardOutput(const std::string& text);

/// Whether the path leads to a pipe or a device, which is written to and not replaced.
bool IsStream(const std::string& path);

} // namespace gif89
