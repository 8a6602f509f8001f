// Names of the document's further channels, which the host knows.
#pragma once

#include "ExportRecord.h"

/// Bytes that GetChannelName writes at most, the zero at the end among them.
constexpr int kChannelNameBytes = 181;

/// Asks the host for the name of a channel.
///
/// @param channel 1 for the plane behind the indices, and so on
/// @param name    kChannelNameBytes bytes; out: the name with a zero byte behind it, untouched when
///                there is an error
/// @return 0, the host's error, or kServiceNotOffered without property services or a name
short GetChannelName(short channel, char* name, ExportRecord* record);
