#include "ReadJpeg.h"

#include "ColorProfile.h"
#include "CommentText.h"
#include "ExifOrientation.h"
#include "MetadataAllowance.h"
#include "Problem.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include <jpeglib.h> // needs <cstdio> before it

#include <jerror.h>

namespace gif89 {

namespace {

// A progressive file of a few kilobytes can demand thousands of passes over a huge picture.
constexpr int kMostScans = 500;

// The most memory that the library may use for a picture in several scans before its first row.
constexpr std::uint64_t kMostCoefficientBytes = std::uint64_t{1} << 31;

// Complaints that do not affect the pixels. Many cameras write padding.
constexpr int kHarmlessWarnings[] = {JWRN_ADOBE_XFORM, JWRN_JFIF_MAJOR, JWRN_EXTRANEOUS_DATA,
                                     JWRN_TOO_MUCH_DATA, JWRN_BOGUS_ICC};

constexpr char kEndsEarly[] = "the file ends before the picture does";

// Markers that do not belong to the picture itself.
constexpr int kExifMarker = JPEG_APP0 + 1, kProfileMarker = JPEG_APP0 + 2;

/// Reads one file. libjpeg reports errors by a jump back into Guard. Therefore everything that owns
/// memory is a member, and the functions that a jump leaves have only trivial objects.
class JpegReader {
  public:
    explicit JpegReader(InputFile& file) : input(file) {}
    ~JpegReader() { jpeg_destroy_decompress(&decoder); } // harmless before it was created
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    Picture Read();

  private:
    template <typename Step> void Guard(Step step);
    [[noreturn]] void Fail() const;
    [[noreturn]] void Jump(const char* why);
    [[noreturn]] static void OnError(j_common_ptr common);
    static void OnMessage(j_common_ptr common, int level);
    static void OnProgress(j_common_ptr common);
    static boolean OnEmpty(j_decompress_ptr decoder);
    static void OnSkip(j_decompress_ptr decoder, long count);
    bool Fetch() noexcept;
    static void* OnAllocate(j_common_ptr common, int pool, std::size_t size);
    bool Allow(std::size_t bytes) noexcept;

    void Create();
    void ReadHeader();
    void CheckCoefficients();
    void MakeTarget();
    void TakeProfile();
    void ReadRows();
    bool AreScansComplete();
    void ReadEnd();
    int Orientation() const;
    std::string Comment() const;

    InputFile& input;
    jpeg_decompress_struct decoder = {};
    jpeg_error_mgr errors = {};
    jpeg_source_mgr source = {};
    jpeg_progress_mgr progress = {};
    std::jmp_buf jump = {};
    char reason[JMSG_LENGTH_MAX] = "";
    bool outOfMemory = false;
    std::exception_ptr problem; // thrown by a callback; must not pass through libjpeg's frames
    MetadataAllowance allowance;
    void* (*allocate)(j_common_ptr, int, std::size_t) = nullptr; // the library's own
    bool inPixels = false;
    bool endMissing = false;

    Picture picture;
    std::vector<std::uint8_t> inks; // one row of cyan, magenta, yellow, black
    std::optional<InkConverter> inkConverter;
};

JpegReader& ReaderOf(j_common_ptr common) {
    return *static_cast<JpegReader*>(common->client_data);
}

template <typename Step> void JpegReader::Guard(Step step) {
    if (setjmp(jump) != 0) Fail();
    step();
}

void JpegReader::Fail() const {
    if (problem) std::rethrow_exception(problem);
    if (outOfMemory) throw std::bad_alloc();
    throw Problem("is a damaged JPEG picture: " + std::string(reason));
}

void JpegReader::Jump(const char* why) {
    std::snprintf(reason, sizeof reason, "%s", why);
    std::longjmp(jump, 1);
}

void JpegReader::OnError(j_common_ptr common) {
    JpegReader& reader = ReaderOf(common);
    reader.outOfMemory = common->err->msg_code == JERR_OUT_OF_MEMORY;
    reader.errors.format_message(common, reader.reason);
    std::longjmp(reader.jump, 1);
}

void JpegReader::OnMessage(j_common_ptr common, int level) {
    if (level >= 0) return; // a trace
    const int code = common->err->msg_code;
    if (code == JWRN_BOGUS_ICC)
        ReaderOf(common).picture.notes.profileUse = InputNotes::ProfileUse::unusable;
    if (std::find(std::begin(kHarmlessWarnings), std::end(kHarmlessWarnings), code) ==
        std::end(kHarmlessWarnings))
        OnError(common);
}

void JpegReader::OnProgress(j_common_ptr common) {
    JpegReader& reader = ReaderOf(common);
    if (reader.decoder.input_scan_number > kMostScans) reader.Jump("it has more than 500 scans");
}

// The library reads ahead, so a file without its end marker is given one. If bits of the picture
// are missing, the library complains itself.
boolean JpegReader::OnEmpty(j_decompress_ptr decoder) {
    static constexpr JOCTET kEnd[] = {0xFF, JPEG_EOI};
    JpegReader& reader = ReaderOf(reinterpret_cast<j_common_ptr>(decoder));
    if (reader.Fetch()) return TRUE;
    if (reader.problem || !reader.inPixels) reader.Jump(kEndsEarly);
    reader.endMissing = true;
    reader.source.next_input_byte = kEnd;
    reader.source.bytes_in_buffer = sizeof kEnd;
    return TRUE;
}

void JpegReader::OnSkip(j_decompress_ptr decoder, long count) {
    jpeg_source_mgr& source = *decoder->src;
    auto left = static_cast<std::size_t>(std::max(count, 0L));
    while (left > source.bytes_in_buffer) {
        left -= source.bytes_in_buffer;
        OnEmpty(decoder);
    }
    source.next_input_byte += left;
    source.bytes_in_buffer -= left;
}

bool JpegReader::Fetch() noexcept {
    try {
        const std::span<const std::uint8_t> bytes = input.ReadAvailable();
        source.next_input_byte = bytes.data();
        source.bytes_in_buffer = bytes.size();
        return !bytes.empty();
    } catch (...) {
        problem = std::current_exception();
        return false;
    }
}

// Counts large blocks, which the library allocates for saved markers.
void* JpegReader::OnAllocate(j_common_ptr common, int pool, std::size_t size) {
    JpegReader& reader = ReaderOf(common);
    if (!reader.Allow(size)) reader.Jump("");
    return reader.allocate(common, pool, size);
}

bool JpegReader::Allow(std::size_t bytes) noexcept {
    try {
        allowance.Take(bytes);
        return true;
    } catch (...) {
        problem = std::current_exception();
        return false;
    }
}

Picture JpegReader::Read() {
    Create();
    ReadHeader();
    MakeTarget();
    ReadRows();
    picture.notes.orientation = Orientation();
    picture.comment = Comment(); // the next step of the library frees the markers
    ReadEnd();
    return std::move(picture);
}

void JpegReader::Create() {
    decoder.err = jpeg_std_error(&errors);
    decoder.client_data = this;
    errors.error_exit = OnError;
    errors.emit_message = OnMessage;
    Guard([this] { jpeg_create_decompress(&decoder); });
    allocate = std::exchange(decoder.mem->alloc_large, OnAllocate);

    source.init_source = [](j_decompress_ptr) {};
    source.fill_input_buffer = OnEmpty;
    source.skip_input_data = OnSkip;
    source.resync_to_restart = jpeg_resync_to_restart;
    source.term_source = [](j_decompress_ptr) {};
    decoder.src = &source;
    progress.progress_monitor = OnProgress;
    decoder.progress = &progress;
}

void JpegReader::ReadHeader() {
    Guard([this] {
        for (const int marker : {JPEG_COM, kExifMarker, kProfileMarker})
            jpeg_save_markers(&decoder, marker, 0xFFFF);
        jpeg_read_header(&decoder, TRUE);
    });
    switch (decoder.jpeg_color_space) {
    case JCS_GRAYSCALE:
        decoder.out_color_space = JCS_GRAYSCALE;
        break;
    case JCS_RGB:
    case JCS_YCbCr:
        decoder.out_color_space = JCS_RGB;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        decoder.out_color_space = JCS_CMYK;
        break;
    default:
        throw Problem("is a JPEG picture of " + std::to_string(decoder.num_components) +
                      " components; 1 (grey), 3 (RGB) or 4 (CMYK) are expected");
    }
    decoder.dct_method = JDCT_ISLOW;
    decoder.do_fancy_upsampling = TRUE;
}

// Until the last of several scans has been read, the whole picture is kept as coefficients of two
// bytes each.
void JpegReader::CheckCoefficients() {
    if (jpeg_has_multiple_scans(&decoder) == 0) return;
    std::uint64_t bytes = 0;
    for (int n = 0; n < decoder.num_components; ++n)
        bytes += std::uint64_t{decoder.comp_info[n].width_in_blocks} *
                 decoder.comp_info[n].height_in_blocks * sizeof(JBLOCK);
    if (bytes > kMostCoefficientBytes)
        throw Problem("is a JPEG picture of " + std::to_string(decoder.image_width) + " x " +
                      std::to_string(decoder.image_height) +
                      " pixels in several scans; these take " + std::to_string(bytes >> 20) +
                      " megabytes at a time, not at most " +
                      std::to_string(kMostCoefficientBytes >> 20));
}

void JpegReader::MakeTarget() {
    const bool grey = decoder.out_color_space == JCS_GRAYSCALE;
    picture = MakePicture(grey ? Picture::Kind::indexed : Picture::Kind::rgb, decoder.image_height,
                          decoder.image_width);
    CheckCoefficients();
    picture.notes.format = "JPEG";
    picture.notes.bits = decoder.data_precision;
    TakeProfile();
    if (grey) SetGreyRamp(picture, 256);
    if (decoder.out_color_space != JCS_CMYK) return;
    inks.resize(std::size_t{4} * decoder.image_width);
    // Pictures with the Adobe marker store 255 minus the ink, the others the ink.
    inkConverter.emplace(picture.notes,
                         decoder.saw_Adobe_marker ? InkStorage::paper : InkStorage::ink);
}

void JpegReader::TakeProfile() {
    JOCTET* bytes = nullptr;
    unsigned count = 0;
    Guard([this, &bytes, &count] { jpeg_read_icc_profile(&decoder, &bytes, &count); });
    const std::unique_ptr<JOCTET, void (*)(void*)> owner(bytes, std::free);
    picture.notes.profile.assign(bytes, bytes + count);
}

void JpegReader::ReadRows() {
    inPixels = true;
    Guard([this] {
        jpeg_start_decompress(&decoder);
        while (decoder.output_scanline < decoder.output_height) {
            std::uint8_t* const place =
                picture.pixels.get() + picture.RowBytes() * decoder.output_scanline;
            JSAMPROW row = inks.empty() ? place : inks.data();
            jpeg_read_scanlines(&decoder, &row, 1);
            if (!inks.empty()) inkConverter->ConvertRow(row, decoder.image_width, place);
        }
    });
}

// A progressive file that ends between two scans would give a coarser picture, and the library
// would not complain. With arithmetic coding there is no telling, because zeros at the end of the
// codes need not be stored; such a file counts as incomplete.
bool JpegReader::AreScansComplete() {
    if (decoder.arith_code != 0) return false;
    if (jpeg_has_multiple_scans(&decoder) == 0) return true;
    if (!decoder.coef_bits) return false;
    for (int n = 0; n < decoder.num_components; ++n)
        for (const int missingBits : decoder.coef_bits[n])
            if (missingBits != 0) return false;
    return true;
}

void JpegReader::ReadEnd() {
    if (endMissing && !AreScansComplete())
        throw Problem("is a damaged JPEG picture: " + std::string(kEndsEarly));
    if (setjmp(jump) == 0)
        jpeg_finish_decompress(&decoder);
    else if (problem || outOfMemory)
        Fail();
    else if (!endMissing)
        NoteDamage(picture.notes, reason);
    if (endMissing) NoteDamage(picture.notes, "its end is missing");
}

int JpegReader::Orientation() const {
    for (jpeg_saved_marker_ptr marker = decoder.marker_list; marker; marker = marker->next) {
        const std::span<const std::uint8_t> block(marker->data, marker->data_length);
        const std::string_view text(reinterpret_cast<const char*>(block.data()), block.size());
        // Markers of the same number are used for other things as well.
        if (marker->marker == kExifMarker && text.starts_with(std::string_view("Exif\0\0", 6)))
            return ExifOrientation(block);
    }
    return 1;
}

std::string JpegReader::Comment() const {
    for (jpeg_saved_marker_ptr marker = decoder.marker_list; marker; marker = marker->next) {
        if (marker->marker != JPEG_COM) continue;
        std::string text = CommentText(
            {reinterpret_cast<const char*>(marker->data), std::size_t{marker->data_length}});
        if (!text.empty()) return text;
    }
    return {};
}

} // namespace

Picture ReadJpeg(InputFile& input) {
    return JpegReader(input).Read();
}

} // namespace gif89
