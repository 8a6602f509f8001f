#include "FastStream.h"

#include "FileManager.h"
#include "MemoryManager.h"

#include <algorithm>
#include <cstring>
#include <new>

// When an error is latched the stream is left without room, so that only the slow path asks for it.
struct FastStream {
    std::int16_t refNum;
    OSErr error = noErr;
    std::uint32_t used = 0;
    std::uint8_t buffer[65536];
};

namespace {

constexpr std::uint32_t kBufferBytes = sizeof(FastStream::buffer);

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
