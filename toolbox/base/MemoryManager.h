// Blocks that stay (pointers) and blocks reached through a master pointer (handles).
#pragma once

#include "ToolboxTypes.h"

#pragma GCC visibility push(default)

/// A new block of `size` bytes, contents undefined, aligned for any type. The caller disposes of
/// it with DisposePtr. Null when there is no memory or `size` is negative.
Ptr NewPtr(Size size);

/// Frees a block from NewPtr; null does nothing.
void DisposePtr(Ptr block);

/// Bytes asked for when the block was made.
Size GetPtrSize(Ptr block);

/// A new block reached through its handle: *handle is its address. The caller disposes of it with
/// DisposeHandle. Null when there is no memory or `size` is negative.
Handle NewHandle(Size size);

/// Frees a handle and its block; null does nothing.
void DisposeHandle(Handle handle);

/// Bytes in the handle's block; 0 for null.
Size GetHandleSize(Handle handle);

/// Grows or shrinks the block, which may move; the first bytes stay. noErr, or memFullErr with the
/// block as it was.
OSErr SetHandleSize(Handle handle, Size size);

/// Blocks only move in SetHandleSize, so locking and purging have nothing to do; callers written
/// for memory that moves may use them on any handle.
inline void HLock(Handle) {}
inline void HUnlock(Handle) {}
inline void HPurge(Handle) {}
inline void HNoPurge(Handle) {}

/// Copies `count` bytes; the areas may overlap.
void BlockMove(const void* source, void* destination, Size count);

/// Pointers and handles alive in the process; for tests that look for what was not given back.
long LiveMemoryBlocks();

#pragma GCC visibility pop
