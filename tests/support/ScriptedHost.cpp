// The advance procedure has no argument, so it finds its host in a variable of the thread.
#include "ScriptedHost.h"

#include "MemoryManager.h"

#include <algorithm>
#include <cstring>

namespace {
thread_local ScriptedHost* currentHost = nullptr;
} // namespace

HostHandleProcs MemoryManagerProcs() {
    HostHandleProcs procs;
    procs.newHandle = [](std::int32_t size) { return NewHandle(size); };
    procs.disposeHandle = DisposeHandle;
    procs.getHandleSize = [](Handle handle) {
        return static_cast<std::int32_t>(GetHandleSize(handle));
    };
    procs.setHandleSize = [](Handle handle, std::int32_t size) {
        return SetHandleSize(handle, size);
    };
    return procs;
}

ScriptedHost::ScriptedHost(int pictureRows, int pictureColumns, int planeCount,
                           std::vector<std::uint8_t> picturePixels)
    : handleProcs(MemoryManagerProcs()), rows(pictureRows), columns(pictureColumns),
      planes(planeCount), pixels(std::move(picturePixels)), advanceKey(&ScriptedHost::Advance),
      handleKey(&handleProcs), dataKey(nullptr), outer(currentHost) {
    currentHost = this;
    record.memoryBudget = 0x7FFFFFFF;
    record.imageMode = planes == 1 ? kIndexedColorMode : kRGBColorMode;
    record.imageRows = static_cast<std::int16_t>(rows);
    record.imageColumns = static_cast<std::int16_t>(columns);
    record.planeCount = static_cast<std::int16_t>(planes);
    record.hasTransparency = planes == 4;
    record.documentName[0] = 7;
    std::memcpy(record.documentName + 1, "picture", 7);
    record.advanceProc.Set(advanceKey);
    record.handleProcs.Set(handleKey);
    record.returnedData.Set(dataKey);
}

ScriptedHost::~ScriptedHost() {
    currentHost = outer;
}

OSErr ScriptedHost::Advance() {
    return currentHost->Answer();
}

OSErr ScriptedHost::Answer() {
    const auto& rect = record.requestRect;
    requests.push_back({{rect.top, rect.left, rect.bottom, rect.right},
                        record.requestFirstPlane,
                        record.requestLastPlane});
    const HostRequest& request = requests.back();
    if (static_cast<int>(requests.size()) == failAt) return failCode;
    const auto different = std::find_if(requests.rbegin(), requests.rend(),
                                        [&](const HostRequest& r) { return r != request; });
    if (different - requests.rbegin() > sameRequestLimit) return kSameRequestTooOften;
    if (request.rect.top < 0 || request.rect.left < 0 || request.rect.bottom > rows ||
        request.rect.right > columns || request.firstPlane < 0 || request.lastPlane >= planes)
        return paramErr;
    Deliver(request);
    return noErr;
}

void ScriptedHost::Deliver(const HostRequest& request) {
    const int deliveredPlanes = request.lastPlane - request.firstPlane + 1;
    const int width = request.rect.right - request.rect.left;
    const int height = std::max(0, request.rect.bottom - request.rect.top);
    const int rowBytes = width * deliveredPlanes + extraRowBytes;
    // No padding behind the last row.
    const auto size =
        height > 0 ? static_cast<std::size_t>(rowBytes * height - extraRowBytes) : std::size_t{0};
    delivered = std::make_unique<std::uint8_t[]>(size);
    std::memset(delivered.get(), 0xA5, size);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::ptrdiff_t pixel =
                std::ptrdiff_t{request.rect.top + y} * columns + request.rect.left + x;
            std::copy_n(pixels.data() + pixel * planes + request.firstPlane, deliveredPlanes,
                        delivered.get() + std::ptrdiff_t{y} * rowBytes + x * deliveredPlanes);
        }
    dataKey.Move(delivered.get());
    record.returnedRowBytes = rowBytes;
}
