// What every export does at each selector.
#include "GIF89Export.h"

#include "HostServices.h"
#include "HostText.h"
#include "MemoryManager.h"
#include "WriteGIF89.h"

#include <algorithm>
#include <iterator>

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
        // Deliberate: the code is not copied to the host's result word, which keeps its value. A
        // host that sends a selector of some later version is not told that an export has failed.
        error = kUnknownSelector;
        DoFinish();
        return true;
    }
}

void GIF89ExportContext::TakeShape() {
    shape = {exportRecord->imageRows, exportRecord->imageColumns, exportRecord->planeCount,
             exportRecord->hasTransparency != 0};
}

void GIF89ExportContext::DoPrepare() {
    TakeShape();
    // Sides below 0, which start refuses, give a negative size, which must not increase the budget.
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
    // A host may start without prepare, or twice. Therefore the sizes are taken from the record as
    // it is now, and the buffers of an earlier start are freed.
    DeallocateBuffers();
    TakeShape();
    if (shape.rows < 1 || shape.columns < 1) {
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
        const Point size = {shape.rows, shape.columns};
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

// Takes the document's comment from the host's property services. If there are no such services, or
// they answer an error, the document counts as one without a comment. Only a lack of memory ends
// the export.
void GIF89ExportContext::FetchComment() {
    const HostText text(*exportRecord, kCommentProperty, 0);
    if (text.Bytes().empty()) return;
    const Size length = std::ssize(text.Bytes());
    comment = reinterpret_cast<char*>(NewPtr(length + 1));
    if (!comment) {
        error = memFullErr;
        return;
    }
    BlockMove(text.Bytes().data(), comment, length);
    comment[length] = '\0';
}
