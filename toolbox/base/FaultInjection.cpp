#include "FaultInjection.h"

#include <array>
#include <atomic>

namespace {

struct Fault {
    std::atomic<unsigned> calls = 0;
    std::atomic<unsigned> failing = 0; // counted from 1; 0 never fails
    std::atomic<OSErr> code = 0;
};

Fault& FaultOf(FaultPoint point) {
    static std::array<Fault, static_cast<std::size_t>(FaultPoint::deleteFile) + 1> faults;
    return faults[static_cast<std::size_t>(point)];
}

} // namespace

void FailNthCall(FaultPoint point, int n, OSErr code) {
    Fault& fault = FaultOf(point);
    fault.calls = 0;
    fault.code = code;
    fault.failing = static_cast<unsigned>(n);
}

int CallsSoFar(FaultPoint point) {
    return static_cast<int>(FaultOf(point).calls);
}

void ClearFaults() {
    for (int i = 0; i <= static_cast<int>(FaultPoint::deleteFile); ++i)
        FailNthCall(static_cast<FaultPoint>(i), 0, noErr);
}

OSErr FaultAt(FaultPoint point) {
    Fault& fault = FaultOf(point);
    const unsigned call = fault.calls.fetch_add(1, std::memory_order_relaxed) + 1;
    return call == fault.failing.load(std::memory_order_relaxed) ? fault.code.load() : OSErr{noErr};
}
