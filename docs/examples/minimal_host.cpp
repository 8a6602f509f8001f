// A complete host: computes a small picture and saves it through the export module, without a
// display. Usage: minimal_host GIF89Export.so OUTPUT.gif
#include "ExportRecord.h"
#include "FileManager.h"
#include "MemoryManager.h"
#include "ResourceManager.h"
#include "ScriptSource.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kRows = 48, kColumns = 64, kPlanes = 3;
constexpr char kComment[] = "made by a minimal host";

ExportRecord record = {}; // shared with the module
std::vector<std::uint8_t> pixels;

// The module asks for planes first..last of an area; they may lie where the picture is, as long as
// they lie as asked: here all three planes, red, green and blue beside each other.
AddressKey dataKey(static_cast<const void*>(nullptr));

OSErr Advance() {
    if (record.requestFirstPlane != 0 || record.requestLastPlane != kPlanes - 1) return paramErr;
    const int top = record.requestRect.top, left = record.requestRect.left;
    dataKey.Move(pixels.data() + (top * kColumns + left) * kPlanes);
    record.returnedRowBytes = kColumns * kPlanes;
    return noErr;
}

// Texts that the module may want; an absent one is no error.
OSErr GetProperty(OSType signature, OSType key, std::int32_t index, Handle* value) {
    *value = nullptr;
    if (signature != kModuleSignature || key != kCommentProperty || index != 0) return noErr;
    const Size size = sizeof kComment - 1;
    *value = NewHandle(size); // the module disposes of it
    if (!*value) return memFullErr;
    std::memcpy(**value, kComment, static_cast<std::size_t>(size));
    return noErr;
}

const HostHandleProcs handleProcs = {
    1,
    4,
    [](std::int32_t size) { return NewHandle(size); },
    [](Handle handle) { DisposeHandle(handle); },
    [](Handle handle) { return static_cast<std::int32_t>(GetHandleSize(handle)); },
    [](Handle handle, std::int32_t size) { return SetHandleSize(handle, size); }};
const HostPropertyProcs propertyProcs = {1, 1, GetProperty};

// The record holds no addresses but keys, which live as long as these.
const AddressKey handleKey(&handleProcs), propertyKey(&propertyProcs), advanceKey(&Advance);

void FillRecord(const std::string& documentName) {
    for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < kColumns; ++x)
            for (const int level : {x * 4, y * 5, 128})
                pixels.push_back(static_cast<std::uint8_t>(level));
    record.imageMode = kRGBColorMode;
    record.imageRows = kRows;
    record.imageColumns = kColumns;
    record.planeCount = kPlanes;
    // What the module takes for itself, and room to ask for the whole picture at once.
    record.memoryBudget = (1 << 20) + (kRows + 1) * kColumns * kPlanes;
    record.documentName[0] =
        static_cast<std::uint8_t>(std::min<std::size_t>(documentName.size(), 255));
    std::memcpy(record.documentName + 1, documentName.data(), record.documentName[0]);
    record.returnedData.Set(dataKey);
    record.handleProcs.Set(handleKey);
    record.propertyProcs.Set(propertyKey);
    record.advanceProc.Set(advanceKey);
}

using Entry = void(short selector, ExportRecord* record, std::intptr_t* data, short* result);

// One export from its first call to its last; the code of the first call that failed.
short Export(Entry* entry) {
    std::intptr_t data = 0; // the module's own
    short result = noErr;
    for (const short selector : {kSelectorPrepare, kSelectorStart}) {
        entry(selector, &record, &data, &result);
        if (result != noErr) return result; // the module has cleaned up, no finish is due
    }
    while (record.requestRect.top < record.requestRect.bottom) { // never, with this module
        if (const OSErr error = Advance()) return error;
        entry(kSelectorContinue, &record, &data, &result);
        if (result != noErr) return result;
    }
    entry(kSelectorFinish, &record, &data, &result);
    const OSErr closing = TakeCloseError(); // a full disk may show this late
    return result != noErr ? result : closing;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return std::fprintf(stderr, "usage: minimal_host MODULE OUTPUT\n"), 2;
    const std::string path = argv[1];
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    auto* const entry = library ? reinterpret_cast<Entry*>(dlsym(library, "main")) : nullptr;
    const std::int16_t resources = OpenResFile(path.substr(0, path.rfind('.')) + ".rsrc");
    if (!entry || resources <= 0) return std::fprintf(stderr, "no module %s\n", argv[1]), 1;

    // A user who presses OK in the options dialog and then answers the save dialog.
    constexpr short kOKButton = 1;
    ScriptSource user({PressItem(kOKButton), PickFile(argv[2])});
    SetEventSource(&user);
    SetStandardFileResponder(&user);
    FillRecord("gradient");
    const short result = Export(entry);
    SetStandardFileResponder(nullptr);
    SetEventSource(nullptr);
    CloseResFile(resources);
    if (result != noErr) std::fprintf(stderr, "code %d %s\n", result, user.Failure().c_str());
    return result == noErr ? 0 : 1;
}
