// A TIFF file in memory, as libtiff sees it, with its complaints turned into problems.
#pragma once

#include "MetadataAllowance.h"

#include <cstdint>
#include <span>
#include <string>
#include <tiffio.h>

namespace gif89 {

/// Opens the first picture. The library prints nothing. Its first error or warning about missing or
/// wrong pixels is kept for Check.
class TiffFile {
  public:
    /// The largest block that libtiff may allocate.
    static constexpr std::int64_t kLargestBlock = 256 << 20;

    /// @param bytes     the whole file, which must outlive this object; it is not changed
    /// @param allowance counts what the library copies of the fields
    ///
    /// Throws Problem when the directory of the first picture is damaged or too large.
    TiffFile(std::span<const std::uint8_t> bytes, MetadataAllowance& allowance);
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;
    ~TiffFile();

    TIFF* Get() const { return tiff; }

    /// Throws Problem with the library's first complaint, if there was one or if the caller says
    /// that a call of the library has failed.
    void Check(bool succeeded = true) const {
        if (!succeeded || *complaint) FailCheck();
    }

    /// The library's first complaint, which Check forgets from then on; empty for none.
    std::string TakeComplaint();

    /// The value of a field that holds one number, or a default when the field is missing.
    template <typename Number> Number Field(std::uint32_t tag, Number missing) const {
        Number value = missing;
        return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : missing;
    }

  private:
    void Open(TIFFOpenOptions* options);
    [[noreturn]] void FailCheck() const;
    std::string Complaint() const;
    static int OnError(TIFF*, void* file, const char* module, const char* format, va_list values);
    static int OnWarning(TIFF*, void* file, const char* module, const char* format, va_list values);
    static tmsize_t OnRead(thandle_t file, void* into, tmsize_t count);
    static tmsize_t OnWrite(thandle_t, void*, tmsize_t) { return 0; }
    static toff_t OnSeek(thandle_t file, toff_t offset, int from);
    static toff_t OnSize(thandle_t file);
    static int OnClose(thandle_t) { return 0; }
    static int OnMap(thandle_t file, void** first, toff_t* count);
    static void OnUnmap(thandle_t, void*, toff_t) {}

    std::span<const std::uint8_t> content;
    toff_t position = 0;
    TIFF* tiff = nullptr;
    char complaint[400] = "";
    bool outOfMemory = false;
};

} // namespace gif89
