#include "ExportHost.h"

#include "FileManager.h"
#include "Problem.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

namespace gif89 {
namespace {

// With a budget below one row the module repeats the same request for ever. After this many
// repetitions the export is ended.
constexpr int kMostRepeatsWithoutBudget = 3;

Handle NewHostHandle(std::int32_t size) {
    return NewHandle(size);
}
void DisposeHostHandle(Handle handle) {
    DisposeHandle(handle);
}
std::int32_t GetHostHandleSize(Handle handle) {
    return static_cast<std::int32_t>(GetHandleSize(handle));
}
OSErr SetHostHandleSize(Handle handle, std::int32_t size) {
    return SetHandleSize(handle, size);
}

bool SameRequest(const Rect& a, short firstA, short lastA, const Rect& b, short firstB,
                 short lastB) {
    return a == b && firstA == firstB && lastA == lastB;
}

/// The record and everything its fields lead to, for one export.
class ExportHost {
  public:
    ExportHost(const ExportModule& theModule, const ExportJob& theJob);
    ExportHost(const ExportHost&) = delete;
    ExportHost& operator=(const ExportHost&) = delete;
    ~ExportHost() { current = outer; }

    void Run();

  private:
    static OSErr Advance() { return current->Deliver(); }
    static OSErr GetProperty(OSType signature, OSType key, std::int32_t index, Handle* value);

    void FillRecord();
    std::int32_t BudgetForOneBand() const;
    OSErr Deliver();
    OSErr CheckRequest(const Rect& area, short first, short last);
    void DeliverInPlace(const Rect& area);
    OSErr DeliverCopy(const Rect& area, short first, short last);
    short PlaneCount() const;
    void Call(short selector);

    // The module's requests do not say which export they belong to. An export may run inside
    // another one, for instance for an editor's preview, so the outer one is restored at the end.
    static thread_local ExportHost* current;
    ExportHost* outer = current;

    const ExportModule& module;
    const ExportJob& job;
    const Picture& picture;
    ExportRecord record = {};
    std::intptr_t moduleData = 0;
    short result = noErr;
    OSErr deliveryError = noErr; // our first failure to deliver, which the module may ignore
    std::vector<std::uint8_t> scratch;
    Rect lastArea = {};
    short lastFirstPlane = -1, lastLastPlane = -1;
    int repeats = 0;

    const HostHandleProcs handleProcs = {
        1, 4, NewHostHandle, DisposeHostHandle, GetHostHandleSize, SetHostHandleSize};
    const HostPropertyProcs propertyProcs = {1, 1, GetProperty};
    AddressKey dataKey{static_cast<const void*>(nullptr)};
    AddressKey handleKey{&handleProcs};
    AddressKey propertyKey{&propertyProcs};
    AddressKey advanceKey{&Advance};
};

thread_local ExportHost* ExportHost::current = nullptr;

ExportHost::ExportHost(const ExportModule& theModule, const ExportJob& theJob)
    : module(theModule), job(theJob), picture(theJob.picture) {
    FillRecord();
    current = this;
}

short ExportHost::PlaneCount() const {
    return static_cast<short>(static_cast<std::size_t>(picture.BytesPerPixel()) +
                              picture.channels.size());
}

void ExportHost::FillRecord() {
    const bool indexed = picture.kind == Picture::Kind::indexed;
    record.imageMode = indexed ? kIndexedColorMode : kRGBColorMode;
    record.imageRows = static_cast<std::int16_t>(picture.rows);
    record.imageColumns = static_cast<std::int16_t>(picture.columns);
    record.planeCount = PlaneCount();
    record.hasTransparency = picture.kind == Picture::Kind::rgbAlpha;
    std::copy_n(picture.table.red, 256, record.hostRedTable);
    std::copy_n(picture.table.green, 256, record.hostGreenTable);
    std::copy_n(picture.table.blue, 256, record.hostBlueTable);
    const std::size_t nameLength = std::min<std::size_t>(job.documentName.size(), 255);
    record.documentName[0] = static_cast<std::uint8_t>(nameLength);
    std::memcpy(record.documentName + 1, job.documentName.data(), nameLength);
    record.memoryBudget = BudgetForOneBand();
    record.returnedData.Set(dataKey);
    record.handleProcs.Set(handleKey);
    record.propertyProcs.Set(propertyKey);
    record.advanceProc.Set(advanceKey);
}

// The memory that the module takes for itself and that of one band. For an indexed picture the
// module takes a byte for each pixel and 64 KiB of tables, and its planes need no budget because
// they are asked for whole. For an RGB picture it takes at least 128 KiB for the indices and
// another twelve bytes for each column. The band must be one row higher than the picture, at one
// plane less than is delivered, so that the module asks for one band only.
std::int32_t ExportHost::BudgetForOneBand() const {
    const std::int64_t rows = picture.rows, columns = picture.columns;
    const bool indexed = picture.kind == Picture::Kind::indexed;
    const std::int64_t buffers =
        indexed ? rows * columns
                : std::max<std::int64_t>(rows * columns, 131072) + columns * 12 + 24;
    const std::int64_t own = buffers + 65536;
    std::int64_t band = job.bandBudget;
    if (band == ExportJob::kWholeImage)
        band = indexed ? columns : (rows + 1) * columns * (PlaneCount() - 1);
    if (own + band > std::numeric_limits<std::int32_t>::max())
        throw Problem("a picture of " + std::to_string(columns) + " x " + std::to_string(rows) +
                      " pixels needs more than the 2 GiB that one export may use");
    return static_cast<std::int32_t>(own + band);
}

// One code of the module stands for several errors of the system, such as a full disk, a quota and
// a limit on the size of files, so the system's own reason is told. A code at the end of an export
// is always about the file that was written, because the dialogs tell about files that cannot be
// read.
[[noreturn]] void FailWith(OSErr code) {
    if (const int error = SystemErrorBehind(code))
        throw OutputProblem("cannot be written: " + SystemReason(error));
    throw Problem(DescribeCode(code),
                  code == userCanceledErr ? ProblemKind::cancelled : ProblemKind::failed);
}

void ExportHost::Call(short selector) {
    module.Call(selector, &record, &moduleData, &result);
    if (result != noErr) FailWith(result);
}

void ExportHost::Run() {
    TakeCloseError(); // forgets that of an earlier export
    Call(kSelectorPrepare);
    Call(kSelectorStart);
    // The module empties its request when it wants no more data.
    while (record.requestRect.top < record.requestRect.bottom && deliveryError == noErr) {
        deliveryError = Deliver();
        Call(kSelectorContinue);
    }
    Call(kSelectorFinish);
    if (deliveryError != noErr) throw Problem(DescribeCode(deliveryError));
    if (const OSErr closing = TakeCloseError(); closing != noErr) FailWith(closing);
}

OSErr ExportHost::Deliver() {
    const Rect area = {record.requestRect.top, record.requestRect.left, record.requestRect.bottom,
                       record.requestRect.right};
    const short first = record.requestFirstPlane, last = record.requestLastPlane;
    OSErr error = CheckRequest(area, first, last);
    if (error == noErr) {
        // The module edits the planes of an indexed picture in place, so it always gets a copy.
        if (picture.kind != Picture::Kind::indexed && first == 0 && last == PlaneCount() - 1)
            DeliverInPlace(area);
        else
            error = DeliverCopy(area, first, last);
    }
    if (deliveryError == noErr) deliveryError = error;
    return error;
}

OSErr ExportHost::CheckRequest(const Rect& area, short first, short last) {
    const bool inside = area.left >= 0 && area.left <= area.right &&
                        area.right <= picture.columns && area.top >= 0 &&
                        area.bottom <= picture.rows;
    if (!inside || first < 0 || first > last || last >= PlaneCount()) return paramErr;

    repeats =
        SameRequest(area, first, last, lastArea, lastFirstPlane, lastLastPlane) ? repeats + 1 : 0;
    lastArea = area;
    lastFirstPlane = first;
    lastLastPlane = last;
    const std::int64_t rowCost = std::int64_t{area.right - area.left} * std::max(1, last - first);
    if (record.memoryBudget < rowCost && repeats >= kMostRepeatsWithoutBudget) return memFullErr;
    return noErr;
}

void ExportHost::DeliverInPlace(const Rect& area) {
    const std::size_t rowBytes = picture.RowBytes();
    dataKey.Move(picture.pixels.get() + static_cast<std::size_t>(area.top) * rowBytes +
                 static_cast<std::ptrdiff_t>(area.left) * picture.BytesPerPixel());
    record.returnedRowBytes = static_cast<std::int32_t>(rowBytes);
}

// Interleaves the requested planes of the picture's pixels and its channels.
OSErr ExportHost::DeliverCopy(const Rect& area, short first, short last) {
    const auto rows = static_cast<std::size_t>(std::max(0, area.bottom - area.top));
    const std::size_t columns = static_cast<std::size_t>(area.right - area.left);
    const auto planes = static_cast<std::size_t>(last - first) + 1;
    const int own = picture.BytesPerPixel();
    try {
        scratch.resize(rows * columns * planes);
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
    for (short plane = first; rows > 0 && plane <= last; ++plane) {
        const bool ofPixels = plane < own;
        const std::uint8_t* source =
            ofPixels ? picture.pixels.get() + plane
                     : picture.channels[static_cast<std::size_t>(plane - own)].bytes.get();
        const std::size_t step = ofPixels ? static_cast<std::size_t>(own) : 1;
        const std::size_t stride = static_cast<std::size_t>(picture.columns) * step;
        source += static_cast<std::size_t>(area.top) * stride +
                  static_cast<std::size_t>(area.left) * step;
        std::uint8_t* out = scratch.data() + (plane - first);
        for (std::size_t row = 0; row < rows; ++row, source += stride)
            for (std::size_t x = 0; x < columns; ++x, out += planes) *out = source[x * step];
    }
    dataKey.Move(scratch.data());
    record.returnedRowBytes = static_cast<std::int32_t>(columns * planes);
    return noErr;
}

OSErr ExportHost::GetProperty(OSType signature, OSType key, std::int32_t index, Handle* value) {
    *value = nullptr;
    if (signature != kModuleSignature) return noErr;
    const Picture& picture = current->picture;
    std::string text;
    if (key == kCommentProperty && index == 0) {
        text = picture.comment;
    } else if (key == kChannelNameProperty) {
        const int channel = index - picture.BytesPerPixel();
        if (channel < 0 || static_cast<std::size_t>(channel) >= picture.channels.size())
            return noErr;
        text = picture.channels[static_cast<std::size_t>(channel)].name;
    }
    if (text.empty()) return noErr;
    *value = NewHandle(static_cast<Size>(text.size()));
    if (!*value) return memFullErr;
    std::memcpy(**value, text.data(), text.size());
    return noErr;
}

} // namespace

void ExportPicture(const ExportModule& module, const ExportJob& job) {
    struct Restore {
        StandardFileResponder* files;
        EventSource* events;
        ~Restore() {
            SetStandardFileResponder(files);
            SetEventSource(events);
        }
    } const restore{SetStandardFileResponder(&job.files), SetEventSource(job.events)};
    ExportHost(module, job).Run();
}

std::string DescribeCode(OSErr code) {
    static constexpr struct {
        OSErr code;
        const char* sentence;
    } kSentences[] = {
        {dskFulErr, "the disk is full"},
        {nsvErr, "there is no such volume"},
        {ioErr, "the disk could not be written or read"},
        {bdNamErr, "the file name cannot be used"},
        {eofErr, "a file ended too early"},
        {tmfoErr, "too many files are open"},
        {fnfErr, "the file does not exist"},
        {wPrErr, "the disk is write-protected"},
        {fBsyErr, "the file is in use"},
        {dupFNErr, "a file of that name exists already"},
        {opWrErr, "the file is open for writing already"},
        {paramErr, "what the module asked for does not exist, or was not delivered as asked for"},
        {permErr, "permission denied"},
        {memFullErr, "not enough memory"},
        {dirNFErr, "the folder does not exist"},
        {userCanceledErr, "cancelled"},
        {kDialogNotMade, "the options dialog cannot be opened"},
        {kHostLacksHandles, "the host offers no memory services to the module"},
        {kUnknownSelector, "the module does not know what was asked of it"},
        {kModeNotExported, "the module does not export this kind of picture"},
        {kExportAtWork, "the module was called while it was at work"},
    };
    for (const auto& entry : kSentences)
        if (entry.code == code) return entry.sentence;
    return "the export failed with code " + std::to_string(code);
}

} // namespace gif89
