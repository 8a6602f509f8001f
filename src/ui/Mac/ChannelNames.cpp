#include "ChannelNames.h"

#include <algorithm>

short GetChannelName(short channel, char* name, ExportRecord* record) {
    const HostPropertyProcs* const properties = record->propertyProcs.Get();
    const HostHandleProcs* const handles = record->handleProcs.Get();
    if (!properties || !properties->getProperty || !handles) return kServiceNotOffered;
    Handle text = nullptr;
    const OSErr code =
        properties->getProperty(kModuleSignature, kChannelNameProperty, channel, &text);
    if (code != noErr) return code;
    if (!text) return kServiceNotOffered;
    const std::int32_t length =
        std::clamp(HostGetHandleSize(handles, text), 0, kChannelNameBytes - 1);
    *std::copy_n(*text, length, name) = '\0';
    HostDisposeHandle(handles, text);
    return noErr;
}
