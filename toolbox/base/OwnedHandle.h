// A handle with an owner, for code that may leave early.
#pragma once

#include "MemoryManager.h"

#include <memory>

struct HandleDisposer {
    void operator()(Handle handle) const { DisposeHandle(handle); }
};
using OwnedHandle = std::unique_ptr<Ptr, HandleDisposer>;
