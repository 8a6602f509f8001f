// Buffered output to a file that is open for writing.
#pragma once

#include "ToolboxTypes.h"

#pragma GCC visibility push(default)

/// A buffered output stream over a file that is open for writing.
struct FastStream;

/// Opens a stream; `mode` 1 writes. Null when there is no memory. Closed by FastClose.
FastStream* FastOpen(std::int16_t refNum, std::int16_t mode);

/// Appends `count` bytes. Cheap for single bytes. The first error of the stream is kept and
/// answered by every later call.
OSErr FastWrite(FastStream* stream, std::int32_t count, const void* bytes);

/// Writes what is still buffered, ends the stream and answers its first error; the file stays
/// open. An error of this last write is also kept for TakeCloseError.
OSErr FastClose(FastStream* stream);

#pragma GCC visibility pop
