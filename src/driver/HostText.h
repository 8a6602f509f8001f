// A text that the host's property services hand out.
#pragma once

#include "ExportRecord.h"

#include <string_view>

/// Asks the host for a text, and gives it back to the host at the end of its life.
class HostText {
  public:
    HostText(const ExportRecord& record, OSType key, std::int32_t index);
    HostText(const HostText&) = delete;
    HostText& operator=(const HostText&) = delete;
    ~HostText();

    /// 0, the host's error, or kServiceNotOffered when there is no such text or the host lacks the
    /// services to find it and to take it back.
    OSErr Code() const { return code; }
    /// Empty unless the code is 0.
    std::string_view Bytes() const { return bytes; }

  private:
    HostHandleProcs handleProcs; // a copy: the host may change its own while it answers
    Handle text = nullptr;
    OSErr code = kServiceNotOffered;
    std::string_view bytes;
};
