// The calls a host offers its modules beside the Toolbox: services in the shared record, buffered
// output, notices to the user, colour conversion.
#pragma once

#include "ColorTable.h"
#include "MemoryManager.h"

#include <string>
#include <vector>

/// The host's handle services, at `handleProcs` of the record.
struct HostHandleProcs {
    std::int16_t version = 1;
    std::int16_t count = 4; ///< procedures that follow
    Handle (*newHandle)(std::int32_t size) = nullptr;
    void (*disposeHandle)(Handle handle) = nullptr;
    std::int32_t (*getHandleSize)(Handle handle) = nullptr;
    OSErr (*setHandleSize)(Handle handle, std::int32_t size) = nullptr;
};

/// The host's property services, at `propertyProcs` of the record.
struct HostPropertyProcs {
    std::int16_t version = 1;
    std::int16_t count = 1; ///< procedures that follow
    /// Looks up property `key`, number `index`, of the open document. 0 with a new host handle in
    /// *value, which the caller gives back with HostDisposeHandle, or with null when the document
    /// has none; else the host's error.
    OSErr (*getProperty)(OSType signature, OSType key, std::int32_t index, Handle* value) = nullptr;
};

/// True when the host has complete handle services; otherwise tells the user and answers false.
bool WarnHostHandleProcsAvailable(const HostHandleProcs* procs);

/// Bytes in a handle that the host made; 0 for null.
std::int32_t HostGetHandleSize(const HostHandleProcs* procs, Handle handle);

/// Gives a handle back to the host; null does nothing.
void HostDisposeHandle(const HostHandleProcs* procs, Handle handle);

/// Speaks to the user for the utilities below: a display, a command line, a test.
class NoticeResponder {
  public:
    virtual ~NoticeResponder() = default;
    /// One sentence that the user must see.
    virtual void Warn(const std::string& sentence) = 0;
    /// The lines of an about box, top to bottom.
    virtual void About(const std::vector<std::string>& lines) = 0;
};

/// Makes `responder` speak on this thread and returns the one before; null prints on standard
/// error. The caller keeps ownership.
NoticeResponder* SetNoticeResponder(NoticeResponder* responder);

/// Shows the about box whose dialog has this resource id: in its dialog when a source operates
/// dialogs and no responder is set, else as the texts of its static items, in order of their item
/// numbers. Nothing is shown when the resource is missing.
void ShowAbout(std::int16_t dialogID);

/// A buffered output stream over a file that is open for writing.
struct FastStream;

/// Opens a stream; `mode` 1 writes. Null when there is no memory. Closed by FastClose.
FastStream* FastOpen(std::int16_t refNum, std::int16_t mode);

/// Appends `count` bytes. Cheap for single bytes. The first error of the stream is kept and
/// answered by every later call.
OSErr FastWrite(FastStream* stream, std::int32_t count, const void* bytes);

/// Writes what is still buffered, ends the stream and answers its first error; the file stays
/// open. An error of this last write is also kept for TakeCloseError.
OSErr FastClose(FastStream* stream);

/// Hue, saturation and value in this order, each 0..65535.
struct HSVColor {
    std::uint16_t hue = 0;
    std::uint16_t saturation = 0;
    std::uint16_t value = 0;
};

/// Converts in integers with truncating divisions, so that every machine gets the same numbers.
void RGB2HSV(const RGBColor* rgb, HSVColor* hsv);
