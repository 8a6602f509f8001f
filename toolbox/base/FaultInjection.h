// Makes the n-th outside step of a kind fail, so that tests can walk through every failure.
#pragma once

#include "ToolboxTypes.h"

#pragma GCC visibility push(default)

/// The steps that can fail: allocations (NewPtr, NewHandle), resources, and the File Manager's
/// calls to the system.
enum class FaultPoint : std::uint8_t {
    allocate,
    loadResource,
    createFile,
    openFile,
    readFile,
    writeFile,
    seekFile,
    closeFile,
    deleteFile,
};

/// Arms one fault: the n-th call (from 1) of that kind from now on fails once, with `code` (not 0)
/// where the step reports a code. Arming replaces an earlier fault of the same kind and restarts
/// the kind's count; n = 0 disarms.
void FailNthCall(FaultPoint point, int n, OSErr code);

/// Calls of that kind since its count was last restarted.
int CallsSoFar(FaultPoint point);

/// Disarms everything and restarts all counts.
void ClearFaults();

/// For the managers: counts one call; the code it must fail with, or 0. A build without tests has
/// none of the functions above, and no step is made to fail.
#ifdef GIF89_FAULT_INJECTION
OSErr FaultAt(FaultPoint point);
#else
inline OSErr FaultAt(FaultPoint /*point*/) {
    return noErr;
}
#endif

#pragma GCC visibility pop
