#include "HostServices.h"

#include "NoticeResponder.h"

namespace {

constexpr std::int16_t kHandleProcsVersion = 1;
constexpr std::int16_t kHandleProcsCount = 4;

} // namespace

bool HostHandleProcsAvailable(const HostHandleProcs* procs) {
    return procs && procs->version >= kHandleProcsVersion && procs->count >= kHandleProcsCount &&
           procs->newHandle && procs->disposeHandle && procs->getHandleSize && procs->setHandleSize;
}

bool WarnHostHandleProcsAvailable(const HostHandleProcs* procs) {
    if (HostHandleProcsAvailable(procs)) return true;
    CurrentNoticeResponder().Warn("This application lacks the handle services (version 1, four "
                                  "procedures) that exporting a GIF file needs.");
    return false;
}

std::int32_t HostGetHandleSize(const HostHandleProcs* procs, Handle handle) {
    return handle ? procs->getHandleSize(handle) : 0;
}

void HostDisposeHandle(const HostHandleProcs* procs, Handle handle) {
    if (handle) procs->disposeHandle(handle);
}
