// What every export does at each selector.
#include "GIF89Export.h"

#include "HostServices.h"
#include "MemoryManager.h"
#include "WriteGIF89.h"

#include <algorithm>
#include <cstring>

Boolean GIF89ExportContext::Dispatch(short selector, ExportRecord* record, short* result) {
    exportRecord = record;
    switch (selector) {
    case kSelectorPrepare:
        DoPrepare();
        if (error != noErr) DoFinish(); // a host may have started before
        *result = error;
        return error != noErr;
    case kSelectorStart:
        DoStart();
        if (error != noErr) DoFinish();
        *result = error;
        return error != noErr;
    case kSelectorContinue:
        DoContinue();
        *result = error;
        return error != noErr;
    case kSelectorFinish:
        DoFinish();
        return true;
    default:
        // Deliberate: the code stays in the context and the host's result word keeps its value. A
        // host that sends a selector from some later agreement is not told of a failed export.
        error = kUnknownSelector;
        DoFinish();
        return true;
    }
}

void GIF89ExportContext::DoPrepare() {
    // Sides below 0, which start refuses, would give a budget back that was never taken.
    const std::int32_t total = std::max(std::int32_t{0}, SizeBuffers(bufferSize));
    if (!WarnHostHandleProcsAvailable(exportRecord->handleProcs.Get())) {
        error = kHostLacksHandles;
        return;
    }
    if (exportRecord->memoryBudget < total)
        error = memFullErr;
    else
        exportRecord->memoryBudget = exportRecord->memoryBudget - total;
}

void GIF89ExportContext::DoStart() {
    // A host may start without prepare, or twice: sizes are taken from the record as it is now, and
    // nothing of an earlier start is kept.
    DeallocateBuffers();
    if (exportRecord->imageRows < 1 || exportRecord->imageColumns < 1) {
        error = paramErr; // without a pixel there is no picture to write
        return;
    }
    SizeBuffers(bufferSize);

    error = AllocateBuffers();
    if (error != noErr) return;
    transIndex = -1;
    FetchComment();
    if (error == noErr) GetParameters();
    if (error == noErr) MakeGIFBuffer();
    if (error == noErr) {
        Point size = {exportRecord->imageRows, exportRecord->imageColumns};
        error =
            WriteGIF89(&outputFile, &size, gifBuffer, gifRowBytes, interlaced, transIndex, &palette,
                       static_cast<short>(numColors), commentEnabled ? comment : nullptr);
    }
    // An empty request tells the host that no more data is wanted.
    exportRecord->requestRect = {};
}

// The whole file is written at start.
void GIF89ExportContext::DoContinue() {}

void GIF89ExportContext::DoFinish() {
    DeallocateBuffers();
}

short GIF89ExportContext::AllocateBuffers() {
    gifBuffer = NewPtr(bufferSize);
    return gifBuffer ? noErr : memFullErr;
}

void GIF89ExportContext::DeallocateBuffers() {
    DisposePtr(gifBuffer);
    gifBuffer = nullptr;
    DisposePtr(reinterpret_cast<Ptr>(comment));
    comment = nullptr;
}

// Takes the document's comment from the host's property services, if there are any and it has one.
// A host that cannot tell is one without a comment; only missing memory ends the export.
void GIF89ExportContext::FetchComment() {
    const HostPropertyProcs* properties = exportRecord->propertyProcs.Get();
    const HostHandleProcs* handles = exportRecord->handleProcs.Get();
    if (!properties || !properties->getProperty || !handles) return;
    Handle text = nullptr;
    if (properties->getProperty(kModuleSignature, kCommentProperty, 0, &text) != noErr || !text)
        return;
    const std::int32_t length = HostGetHandleSize(handles, text);
    if (length > 0) {
        comment = reinterpret_cast<char*>(NewPtr(Size{length} + 1));
        if (comment) {
            std::memcpy(comment, *text, static_cast<std::size_t>(length));
            comment[length] = '\0';
        } else {
            error = memFullErr;
        }
    }
    HostDisposeHandle(handles, text);
}
