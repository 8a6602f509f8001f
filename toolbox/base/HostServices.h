// What a host offers its modules through the shared record: handles of its memory, properties of
// its document.
#pragma once

#include "MemoryManager.h"

#pragma GCC visibility push(default)

/// The host's handle services, at `handleProcs` of the record.
struct HostHandleProcs {
    std::int16_t version = 1;
    std::int16_t count = 4; ///< procedures that follow
    Handle (*newHandle)(std::int32_t size) = nullptr;
    void (*disposeHandle)(Handle handle) = nullptr;
    std::int32_t (*getHandleSize)(Handle handle) = nullptr;
    OSErr (*setHandleSize)(Handle handle, std::int32_t size) = nullptr;
};

/// The host's property services, at `propertyProcs` of the record.
struct HostPropertyProcs {
    std::int16_t version = 1;
    std::int16_t count = 1; ///< procedures that follow
    /// Looks up property `key`, number `index`, of the open document. 0 with a new host handle in
    /// *value, which the caller gives back with HostDisposeHandle, or with null when the document
    /// has none; else the host's error.
    OSErr (*getProperty)(OSType signature, OSType key, std::int32_t index, Handle* value) = nullptr;
};

/// True when the host has complete handle services: a version that is known, and no procedure null.
bool HostHandleProcsAvailable(const HostHandleProcs* procs);

/// The same, but tells the user when it answers false.
bool WarnHostHandleProcsAvailable(const HostHandleProcs* procs);

/// Bytes in a handle that the host made; 0 for null.
std::int32_t HostGetHandleSize(const HostHandleProcs* procs, Handle handle);

/// Gives a handle back to the host; null does nothing.
void HostDisposeHandle(const HostHandleProcs* procs, Handle handle);

#pragma GCC visibility pop
