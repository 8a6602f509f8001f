#include "ChannelNames.h"

#include "HostText.h"

#include <algorithm>

short GetChannelName(short channel, char* name, ExportRecord* record) {
    const HostText text(*record, kChannelNameProperty, channel);
    if (text.Code() != noErr) return text.Code();
    const std::string_view cut = text.Bytes().substr(0, kChannelNameBytes - 1);
    *std::copy(cut.begin(), cut.end(), name) = '\0';
    return noErr;
}
