#include "HostUtilities.h"

#include "DialogResources.h"
#include "EventSource.h"
#include "FileManager.h"
#include "HostDialogs.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

// When an error is latched the stream is left without room, so that only the slow path asks for it.
struct FastStream {
    std::int16_t refNum;
    OSErr error = noErr;
    std::uint32_t used = 0;
    std::uint8_t buffer[65536];
};

namespace {

constexpr std::int16_t kHandleProcsVersion = 1;
constexpr std::int16_t kHandleProcsCount = 4;
constexpr std::uint32_t kBufferBytes = sizeof(FastStream::buffer);

class PrintingResponder : public NoticeResponder {
  public:
    void Warn(const std::string& sentence) override {
        std::fprintf(stderr, "%s\n", sentence.c_str());
    }
    void About(const std::vector<std::string>& lines) override {
        for (const std::string& line : lines) std::fprintf(stderr, "%s\n", line.c_str());
    }
};

thread_local NoticeResponder* theResponder = nullptr;

NoticeResponder& Responder() {
    static PrintingResponder& printing = *new PrintingResponder;
    return theResponder ? *theResponder : printing;
}

bool IsComplete(const HostHandleProcs& procs) {
    return procs.version >= kHandleProcsVersion && procs.count >= kHandleProcsCount &&
           procs.newHandle && procs.disposeHandle && procs.getHandleSize && procs.setHandleSize;
}

void LatchError(FastStream& stream, OSErr error) {
    stream.error = error;
    stream.used = kBufferBytes;
}

void Flush(FastStream& stream) {
    auto count = static_cast<std::int32_t>(stream.used);
    stream.used = 0;
    if (const OSErr error = FSWrite(stream.refNum, &count, stream.buffer))
        LatchError(stream, error);
}

// Kept out of line, so that FastWrite saves no registers for it on its short way.
[[gnu::noinline]] OSErr WriteThroughBuffer(FastStream& stream, std::int32_t count,
                                           const std::uint8_t* bytes) {
    if (stream.error == noErr && count < 0) LatchError(stream, paramErr);
    auto rest = static_cast<std::uint32_t>(count);
    while (stream.error == noErr && rest > 0) {
        if (stream.used == kBufferBytes) {
            Flush(stream);
            continue;
        }
        const std::uint32_t step = std::min(rest, kBufferBytes - stream.used);
        std::memcpy(stream.buffer + stream.used, bytes, step);
        stream.used += step;
        bytes += step;
        rest -= step;
    }
    return stream.error;
}

} // namespace

bool WarnHostHandleProcsAvailable(const HostHandleProcs* procs) {
    if (procs && IsComplete(*procs)) return true;
    Responder().Warn("This application lacks the handle services (version 1, four procedures) that "
                     "exporting a GIF file needs.");
    return false;
}

std::int32_t HostGetHandleSize(const HostHandleProcs* procs, Handle handle) {
    return handle ? procs->getHandleSize(handle) : 0;
}

void HostDisposeHandle(const HostHandleProcs* procs, Handle handle) {
    if (handle) procs->disposeHandle(handle);
}

NoticeResponder* SetNoticeResponder(NoticeResponder* responder) {
    return std::exchange(theResponder, responder);
}

void ShowAbout(std::int16_t dialogID) {
    if (!theResponder && CurrentEventSource()) return ShowNoticeDialog(dialogID);
    const auto dialog = ReadDialogTemplate(dialogID);
    const auto items = dialog ? ReadItemList(dialog->itemList) : std::nullopt;
    if (!items) return;
    std::vector<std::string> texts;
    for (const ItemTemplate& item : *items)
        if ((item.kind & ~kItemDisabled) == kStaticTextItem) texts.push_back(item.text);
    Responder().About(texts);
}

FastStream* FastOpen(std::int16_t refNum, std::int16_t mode) {
    if (mode != 1) return nullptr;
    const Ptr block = NewPtr(sizeof(FastStream));
    if (!block) return nullptr;
    auto* const stream = new (block) FastStream;
    stream->refNum = refNum;
    return stream;
}

OSErr FastWrite(FastStream* stream, std::int32_t count, const void* bytes) {
    // Nearly every call brings one byte.
    if (count != 1 || stream->used == kBufferBytes)
        return WriteThroughBuffer(*stream, count, static_cast<const std::uint8_t*>(bytes));
    stream->buffer[stream->used++] = *static_cast<const std::uint8_t*>(bytes);
    return noErr;
}

OSErr FastClose(FastStream* stream) {
    if (stream->error == noErr && stream->used > 0) {
        Flush(*stream);
        KeepCloseError(stream->error);
    }
    const OSErr error = stream->error;
    DisposePtr(reinterpret_cast<Ptr>(stream));
    return error;
}

void RGB2HSV(const RGBColor* rgb, HSVColor* hsv) {
    const std::int64_t red = rgb->red, green = rgb->green, blue = rgb->blue;
    const std::int64_t max = std::max({red, green, blue});
    const std::int64_t delta = max - std::min({red, green, blue});
    *hsv = HSVColor{0, 0, static_cast<std::uint16_t>(max)};
    if (delta == 0) return; // grey, black included: no hue and no saturation
    std::int64_t sector = red - green + 4 * delta;
    if (green == max) sector = blue - red + 2 * delta;
    if (red == max) sector = green - blue + (green < blue ? 6 * delta : 0);
    hsv->hue = static_cast<std::uint16_t>(sector * 65536 / (6 * delta));
    hsv->saturation = static_cast<std::uint16_t>(delta * 65535 / max);
}
