#include "TiffFile.h"

#include "Problem.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace gif89 {

namespace {

// In some complaints the library names the file first.
constexpr std::string_view kName = "picture", kNameInComplaints = "picture: ";

TiffFile& FileOf(void* handle) {
    return *static_cast<TiffFile*>(handle);
}

// Most warnings are about fields that do not matter to us. These stand for pixels that the decoder
// made up, or for a field that lies behind the end of the file.
bool TellsOfDamage(std::string_view module, std::string_view text) {
    if (module == "JPEGLib") return text.find("extraneous bytes") == std::string_view::npos;
    return module.starts_with("Fax") || text.starts_with("IO error");
}

} // namespace

TiffFile::TiffFile(std::span<const std::uint8_t> bytes) : content(bytes) {
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (!options) throw std::bad_alloc();
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
    // "C": a strip of the whole picture stays one, since nothing here loads strips as a whole.
    tiff = TIFFClientOpenExt(kName.data(), "rC", this, OnRead, OnWrite, OnSeek, OnClose, OnSize,
                             OnMap, OnUnmap, options);
}

void TiffFile::FailCheck() const {
    std::string_view reason = *complaint ? complaint : "its pixels cannot be decoded";
    if (reason.starts_with(kNameInComplaints)) reason.remove_prefix(kNameInComplaints.size());
    throw Problem("is a damaged TIFF picture: " + std::string(reason));
}

int TiffFile::OnError(TIFF*, void* file, const char*, const char* format, va_list values) {
    auto& complaint = FileOf(file).complaint;
    if (!*complaint) std::vsnprintf(complaint, sizeof complaint, format, values);
    return 1; // not to be printed
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

// The library reads fields and pixels from there without copies; it never writes to it.
int TiffFile::OnMap(thandle_t file, void** first, toff_t* count) {
    const std::span<const std::uint8_t> content = FileOf(file).content;
    *first = const_cast<std::uint8_t*>(content.data());
    *count = content.size();
    return 1;
}

} // namespace gif89
