#include "TiffFile.h"

#include "Problem.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace gif89 {

namespace {

// Some of the library's messages begin with the name of the file.
constexpr std::string_view kName = "picture", kNameInComplaints = "picture: ";

TiffFile& FileOf(void* handle) {
    return *static_cast<TiffFile*>(handle);
}

// Most warnings are about fields that we do not use. These are about pixels that the decoder has
// made up, or about a field whose data are behind the end of the file.
bool TellsOfDamage(std::string_view module, std::string_view text) {
    if (module == "JPEGLib") return text.find("extraneous bytes") == std::string_view::npos;
    return module.starts_with("Fax") || text.starts_with("IO error");
}

/// A number in the file's byte order; 0 where the file has ended.
std::uint64_t NumberAt(std::span<const std::uint8_t> file, std::uint64_t at, unsigned bytes) {
    if (at > file.size() || bytes > file.size() - at) return 0;
    const bool highFirst = file[0] == 'M';
    std::uint64_t number = 0;
    for (unsigned n = 0; n < bytes; ++n)
        number = number << 8 | file[at + (highFirst ? n : bytes - 1 - n)];
    return number;
}

bool TellsWherePixelsAre(std::uint64_t tag) {
    constexpr std::uint64_t kTags[] = {TIFFTAG_STRIPOFFSETS, TIFFTAG_STRIPBYTECOUNTS,
                                       TIFFTAG_TILEOFFSETS, TIFFTAG_TILEBYTECOUNTS};
    return std::find(std::begin(kTags), std::end(kTags), tag) != std::end(kTags);
}

// The library copies the data of all fields of the first directory, and many fields may share the
// same bytes of the file.
void TakeFields(std::span<const std::uint8_t> file, MetadataAllowance& allowance) {
    const bool isBig = NumberAt(file, 2, 2) == 43; // BigTIFF has offsets of 64 bits
    const unsigned addressBytes = isBig ? 8 : 4, countBytes = isBig ? 8 : 2;
    const std::uint64_t directory = NumberAt(file, isBig ? 8 : 4, addressBytes);
    std::uint64_t left = NumberAt(file, directory, countBytes);
    for (std::uint64_t at = directory + countBytes; left > 0 && at < file.size();
         --left, at += 4 + 2 * addressBytes) {
        const std::uint64_t count = NumberAt(file, at + 4, addressBytes);
        if (count > file.size() || TellsWherePixelsAre(NumberAt(file, at, 2))) continue;
        const std::uint64_t type = NumberAt(file, at + 2, 2);
        if (type > TIFF_IFD8) continue;
        allowance.Take(count *
                       static_cast<unsigned>(TIFFDataWidth(static_cast<TIFFDataType>(type))));
    }
}

} // namespace

TiffFile::TiffFile(std::span<const std::uint8_t> bytes, MetadataAllowance& allowance)
    : content(bytes) {
    TakeFields(bytes, allowance);
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (!options) throw std::bad_alloc();
    errno = 0; // so that an older error is not taken for one of the library
    Open(options);
    TIFFOpenOptionsFree(options);
    if (!tiff) Check(false);
}

TiffFile::~TiffFile() {
    if (tiff) TIFFClose(tiff);
}

void TiffFile::Open(TIFFOpenOptions* options) {
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, kLargestBlock);
    TIFFOpenOptionsSetErrorHandlerExtR(options, OnError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, OnWarning, this);
    // "C" stops the library from splitting a strip that holds the whole picture. Strips are read
    // row by row here, so a large one does no harm.
    tiff = TIFFClientOpenExt(kName.data(), "rC", this, OnRead, OnWrite, OnSeek, OnClose, OnSize,
                             OnMap, OnUnmap, options);
}

void TiffFile::FailCheck() const {
    if (outOfMemory) throw std::bad_alloc();
    const std::string reason = *complaint ? Complaint() : "its pixels cannot be decoded";
    throw Problem("is a damaged TIFF picture: " + reason);
}

std::string TiffFile::Complaint() const {
    std::string_view reason = complaint;
    if (reason.starts_with(kNameInComplaints)) reason.remove_prefix(kNameInComplaints.size());
    return std::string(reason);
}

std::string TiffFile::TakeComplaint() {
    if (outOfMemory) throw std::bad_alloc();
    std::string taken = Complaint();
    *complaint = '\0';
    return taken;
}

// The library has many texts for a lack of memory, but errno is always the same.
int TiffFile::OnError(TIFF*, void* file, const char*, const char* format, va_list values) {
    if (errno == ENOMEM) FileOf(file).outOfMemory = true;
    auto& complaint = FileOf(file).complaint;
    if (!*complaint) std::vsnprintf(complaint, sizeof complaint, format, values);
    return 1; // tells the library not to print it
}

int TiffFile::OnWarning(TIFF*, void* file, const char* module, const char* format, va_list values) {
    char text[sizeof complaint];
    std::vsnprintf(text, sizeof text, format, values);
    auto& complaint = FileOf(file).complaint;
    if (!*complaint && TellsOfDamage(module ? module : "", text))
        std::memcpy(complaint, text, sizeof text);
    return 1;
}

tmsize_t TiffFile::OnRead(thandle_t file, void* into, tmsize_t count) {
    TiffFile& self = FileOf(file);
    const toff_t size = self.content.size();
    const toff_t taken = std::min(static_cast<toff_t>(count), size - std::min(self.position, size));
    std::memcpy(into, self.content.data() + self.position, taken);
    self.position += taken;
    return static_cast<tmsize_t>(taken);
}

toff_t TiffFile::OnSeek(thandle_t file, toff_t offset, int from) {
    TiffFile& self = FileOf(file);
    if (from == SEEK_CUR) offset += self.position;
    if (from == SEEK_END) offset += self.content.size();
    return self.position = offset;
}

toff_t TiffFile::OnSize(thandle_t file) {
    return FileOf(file).content.size();
}

// The library reads fields and pixels directly from these bytes and never writes to them.
int TiffFile::OnMap(thandle_t file, void** first, toff_t* count) {
    const std::span<const std::uint8_t> content = FileOf(file).content;
    *first = const_cast<std::uint8_t*>(content.data());
    *count = content.size();
    return 1;
}

} // namespace gif89
