// A host with a picture in memory that delivers what is asked for, notes every request, and fails
// where a test wants it to.
#pragma once

#include "ExportRecord.h"

#include <memory>
#include <vector>

/// Handle services that are the Memory Manager.
HostHandleProcs MemoryManagerProcs();

/// One request as the record held it.
struct HostRequest {
    Rect rect;
    short firstPlane;
    short lastPlane;
    bool operator==(const HostRequest&) const = default;
};

/// Hosts may nest; the latest one on a thread answers. Must not move while it lives.
class ScriptedHost {
  public:
    /// The answer to a request that came too often in a row.
    static constexpr OSErr kSameRequestTooOften = -29999;

    /// A picture of rows x columns x planes bytes, interleaved: one plane is indexed, four have
    /// opacity. The record asks for nothing yet and offers handle services.
    ScriptedHost(int pictureRows, int pictureColumns, int planes,
                 std::vector<std::uint8_t> picturePixels);
    ~ScriptedHost();
    ScriptedHost(const ScriptedHost&) = delete;
    ScriptedHost& operator=(const ScriptedHost&) = delete;

    ExportRecord record = {};
    HostHandleProcs handleProcs;
    std::vector<HostRequest> requests;

    int failAt = 0;             ///< the request, from 1, that fails; 0 for none
    OSErr failCode = ioErr;     ///< what it answers
    int extraRowBytes = 0;      ///< padding behind each delivered row
    int sameRequestLimit = 100; ///< equal requests in a row that are served

  private:
    static OSErr Advance();
    OSErr Answer();
    void Deliver(const HostRequest& request);

    int rows, columns, planes;
    std::vector<std::uint8_t> pixels;
    std::unique_ptr<std::uint8_t[]> delivered; // of its exact size, anew for every request
    AddressKey advanceKey, handleKey, dataKey;
    ScriptedHost* outer;
};
