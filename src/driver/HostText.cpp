#include "HostText.h"

namespace {

bool OffersProperties(const HostPropertyProcs* procs) {
    return procs && procs->version >= 1 && procs->count >= 1 && procs->getProperty;
}

} // namespace

HostText::HostText(const ExportRecord& record, OSType key, std::int32_t index) {
    const HostPropertyProcs* const properties = record.propertyProcs.Get();
    const HostHandleProcs* const handles = record.handleProcs.Get();
    if (!OffersProperties(properties) || !HostHandleProcsAvailable(handles)) return;
    handleProcs = *handles;
    code = properties->getProperty(kModuleSignature, key, index, &text);
    if (code != noErr) {
        text = nullptr; // after an error the field does not hold a text
        return;
    }
    if (!text) {
        code = kServiceNotOffered;
        return;
    }
    const std::int32_t length = HostGetHandleSize(&handleProcs, text);
    if (*text && length > 0)
        bytes = {reinterpret_cast<const char*>(*text), static_cast<std::size_t>(length)};
}

HostText::~HostText() {
    HostDisposeHandle(&handleProcs, text);
}
