#include "ReadPng.h"

#include "CommentText.h"
#include "ExifOrientation.h"
#include "MetadataAllowance.h"
#include "Problem.h"
#include "ScaleSample.h"
#include "StatedColors.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <png.h>
#include <span>
#include <string_view>
#include <utility>

namespace gif89 {

namespace {

// Chunks that libpng 1.6 does not know: those of an animation, and colours as code points.
constexpr png_byte kFurtherChunks[] = "acTL\0fcTL\0cICP";
constexpr int kFurtherChunkCount = 3;

/// The pixels of the picture that one pass holds.
struct Grid {
    int firstRow, firstColumn, rowStep, columnStep;
};
constexpr Grid kWholePicture[] = {{0, 0, 1, 1}};
constexpr Grid kAdam7[] = {{0, 0, 8, 8}, {0, 4, 8, 8}, {4, 0, 8, 4}, {0, 2, 4, 4},
                           {2, 0, 4, 2}, {0, 1, 2, 2}, {1, 0, 2, 1}};

/// How pictures of a colour type are stored.
struct ColorForm {
    int type;
    Picture::Kind kind;
    int samples;             // in the file
    int from[4];             // the file's sample for each byte of a pixel; -1: opacity by colour
    Picture::Kind keyedKind; // the kind when one colour is declared transparent
};
using enum Picture::Kind;
constexpr ColorForm kColorForms[] = {
    {PNG_COLOR_TYPE_GRAY, indexed, 1, {0}, indexed},
    {PNG_COLOR_TYPE_PALETTE, indexed, 1, {0}, indexed},
    {PNG_COLOR_TYPE_GRAY_ALPHA, rgbAlpha, 2, {0, 0, 0, 1}, rgbAlpha},
    {PNG_COLOR_TYPE_RGB, rgb, 3, {0, 1, 2, -1}, rgbAlpha},
    {PNG_COLOR_TYPE_RGB_ALPHA, rgbAlpha, 4, {0, 1, 2, 3}, rgbAlpha}};

bool IsNamed(const png_unknown_chunk& chunk, std::string_view name) {
    return name == reinterpret_cast<const char*>(chunk.name);
}

/// Reads one file. libpng reports errors by a jump back into Guard. Therefore everything that owns
/// memory is a member, and the functions that a jump leaves have only trivial objects.
class PngReader {
  public:
    explicit PngReader(InputFile& file);
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    Picture Read();

  private:
    template <typename Step> void Guard(Step step);
    [[noreturn]] void Fail() const;
    [[noreturn]] static void OnError(png_structp png, png_const_charp message);
    static void OnWarning(png_structp png, png_const_charp message);
    static png_voidp OnAllocate(png_structp png, png_alloc_size_t size);
    static void OnFree(png_structp, png_voidp block) { std::free(block); }
    void* Allocate(std::size_t size) noexcept;
    static void OnRead(png_structp png, png_bytep bytes, std::size_t count);
    bool Fetch(std::uint8_t* bytes, std::size_t count) noexcept;

    void ReadHeader();
    void MakeTarget();
    void SetTable();
    void SetTransparency();
    void ReadRows();
    void PlaceRow(int row, const Grid& grid);
    void ReadEnd();
    void CheckIndices() const;
    void FinishTransparency();
    std::span<const png_unknown_chunk> FurtherChunks() const;
    void CountPictures();
    void TakeProfile();
    std::optional<double> Gamma() const;
    std::optional<Chromaticities> Points() const;
    int Orientation() const;
    std::string Comment() const;

    InputFile& input;
    png_structp png = nullptr;
    png_infop info = nullptr;
    char reason[200] = "";
    bool atEnd = false;         // the file ended where libpng needed more
    std::exception_ptr problem; // thrown by a callback; must not pass through libpng's frames
    // Counts what libpng allocates for texts and profiles. It allocates little else, and that once.
    MetadataAllowance allowance;

    png_uint_32 columns = 0, rows = 0;
    int depth = 0, colorType = 0;
    bool interlaced = false;
    bool colorsDoubted = false; // a chunk that describes the colours is damaged
    const ColorForm* form = nullptr;
    bool keyed = false;          // pixels of the colour `key` are transparent
    unsigned key[3] = {};        // at full depth
    std::uint8_t opacityOf[256]; // by index, for indexed pictures of up to 8 bits
    Picture picture;
    std::vector<std::uint8_t> rowBytes; // one row as libpng delivers it
};

PngReader::PngReader(InputFile& file) : input(file) {
    png = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning, this,
                                   OnAllocate, OnFree);
    if (png) info = png_create_info_struct(png);
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        if (problem) std::rethrow_exception(problem);
        throw Problem("cannot be read: libpng does not start");
    }
    std::memset(opacityOf, 255, sizeof opacityOf);
}

template <typename Step> void PngReader::Guard(Step step) {
    if (setjmp(png_jmpbuf(png)) != 0) Fail();
    step();
}

void PngReader::Fail() const {
    if (problem) std::rethrow_exception(problem);
    throw Problem("is a damaged PNG picture: " + std::string(reason));
}

void PngReader::OnError(png_structp png, png_const_charp message) {
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    std::snprintf(reader->reason, sizeof reader->reason, "%s", message);
    png_longjmp(png, 1);
}

// Warnings begin with the name of the chunk. The library leaves out a damaged profile, and one that
// does not fit the picture's colour type. Without memory for a text it would leave that out as well
// and go on to unpack the next one, so this ends the reading.
void PngReader::OnWarning(png_structp png, png_const_charp message) {
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    if (reader->problem) png_longjmp(png, 1);
    const std::string_view chunk(message, std::min<std::size_t>(std::strlen(message), 5));
    if (chunk == "iCCP:" || chunk == "gAMA:" || chunk == "cHRM:") reader->colorsDoubted = true;
}

png_voidp PngReader::OnAllocate(png_structp png, png_alloc_size_t size) {
    return static_cast<PngReader*>(png_get_mem_ptr(png))->Allocate(size);
}

// The stated length of a chunk can make libpng allocate and clear 2 gigabytes, and its own limit
// leads only to a warning.
void* PngReader::Allocate(std::size_t size) noexcept {
    try {
        allowance.Take(size);
        void* const block = std::malloc(size);
        if (!block) throw std::bad_alloc();
        return block;
    } catch (...) {
        problem = std::current_exception();
        return nullptr;
    }
}

void PngReader::OnRead(png_structp png, png_bytep bytes, std::size_t count) {
    auto* reader = static_cast<PngReader*>(png_get_io_ptr(png));
    if (!reader->Fetch(bytes, count)) png_error(png, "the file ends before the picture does");
}

bool PngReader::Fetch(std::uint8_t* bytes, std::size_t count) noexcept {
    try {
        atEnd = input.Read(bytes, count) < count;
        return !atEnd;
    } catch (...) {
        problem = std::current_exception();
        return false;
    }
}

Picture PngReader::Read() {
    ReadHeader();
    MakeTarget();
    CountPictures();
    TakeProfile();
    ReadRows();
    ReadEnd();
    CheckIndices();
    FinishTransparency();
    DropOpaqueAlpha(picture);
    picture.notes.orientation = Orientation();
    picture.comment = Comment();
    return std::move(picture);
}

void PngReader::ReadHeader() {
    Guard([this] {
        png_set_read_fn(png, this, OnRead);
        // The sides are checked by MakePicture, whose message is clearer than libpng's. Until then
        // no memory is allocated for pixels.
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_chunk_malloc_max(png, MetadataAllowance::kMegabytes << 20); // of an unpacked chunk
        // By default libpng skips a damaged tRNS, and the picture silently loses its transparency.
        png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, kFurtherChunks,
                                    kFurtherChunkCount);
        png_read_info(png, info);
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, kFurtherChunks,
                                    kFurtherChunkCount);
        int interlaceType = 0;
        png_get_IHDR(png, info, &columns, &rows, &depth, &colorType, &interlaceType, nullptr,
                     nullptr);
        interlaced = interlaceType != PNG_INTERLACE_NONE;
    });
    form = std::find_if(std::begin(kColorForms), std::end(kColorForms),
                        [this](const ColorForm& each) { return each.type == colorType; });
}

void PngReader::MakeTarget() {
    keyed = colorType != PNG_COLOR_TYPE_PALETTE && png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    picture = MakePicture(keyed ? form->keyedKind : form->kind, rows, columns);
    picture.notes.format = "PNG";
    picture.notes.bits = depth;
    if (picture.kind == indexed) SetTable();
    if (png_get_valid(png, info, PNG_INFO_tRNS) != 0) SetTransparency();
    Guard([this] {
        png_set_packing(png); // one byte a sample for depths 1, 2 and 4
        png_read_update_info(png, info);
    });
    rowBytes.resize(png_get_rowbytes(png, info));
}

void PngReader::SetTable() {
    if (colorType == PNG_COLOR_TYPE_GRAY) {
        SetGreyRamp(picture, depth < 8 ? 1 << depth : 256);
        return;
    }
    png_colorp entries = nullptr;
    png_get_PLTE(png, info, &entries, &picture.colors); // libpng has made sure that it is there
    for (int index = 0; index < picture.colors; ++index)
        SetTableEntry(picture.table, index,
                      {0, entries[index].red, entries[index].green, entries[index].blue});
}

void PngReader::SetTransparency() {
    png_bytep opacities = nullptr;
    int count = 0;
    png_color_16p color = nullptr;
    png_get_tRNS(png, info, &opacities, &count, &color);
    if (keyed) {
        // Below 16 bits only the low bits count.
        const unsigned mask = (1U << depth) - 1;
        const bool grey = colorType == PNG_COLOR_TYPE_GRAY;
        key[0] = (grey ? color->gray : color->red) & mask;
        key[1] = color->green & mask;
        key[2] = color->blue & mask;
        if (grey && depth <= 8) opacityOf[key[0]] = 0;
    } else {
        std::copy_n(opacities, count, opacityOf);
    }
    if (picture.kind == indexed)
        picture.channels.push_back(
            {kTransparencyChannel,
             std::make_unique_for_overwrite<std::uint8_t[]>(picture.PixelBytes())});
}

// Pixels that the file stores in our layout are read into their place directly. Interlaced pictures
// are put together here, because libpng would need a second picture in its own layout for that.
void PngReader::ReadRows() {
    const bool inPlace = !interlaced && depth <= 8 && picture.BytesPerPixel() == form->samples;
    const std::span<const Grid> passes = interlaced ? std::span<const Grid>(kAdam7) : kWholePicture;
    Guard([this, inPlace, passes] {
        for (const Grid& grid : passes) {
            if (grid.firstColumn >= picture.columns) continue; // the file has no rows for this pass
            for (int row = grid.firstRow; row < picture.rows; row += grid.rowStep) {
                std::uint8_t* const place =
                    picture.pixels.get() + picture.RowBytes() * static_cast<std::size_t>(row);
                png_read_row(png, inPlace ? place : rowBytes.data(), nullptr);
                if (!inPlace) PlaceRow(row, grid);
            }
        }
    });
}

void PngReader::PlaceRow(int row, const Grid& grid) {
    const int pixelBytes = picture.BytesPerPixel();
    const auto firstPixel =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(picture.columns);
    std::uint8_t* const pixels =
        picture.pixels.get() + firstPixel * static_cast<std::size_t>(pixelBytes);
    std::uint8_t* const opacities =
        picture.channels.empty() ? nullptr : picture.channels[0].bytes.get() + firstPixel;

    const std::uint8_t* next = rowBytes.data();
    for (int column = grid.firstColumn; column < picture.columns; column += grid.columnStep) {
        unsigned samples[4] = {};
        for (int n = 0; n < form->samples; ++n) {
            samples[n] = *next++;
            if (depth == 16) samples[n] = samples[n] << 8 | *next++;
        }
        // Compared before 16 bits are reduced, since neighbouring colours become equal then.
        const bool transparent = keyed && std::equal(samples, samples + form->samples, key);
        std::uint8_t* const pixel = pixels + static_cast<std::ptrdiff_t>(column) * pixelBytes;
        for (int n = 0; n < pixelBytes; ++n) {
            if (form->from[n] < 0) {
                pixel[n] = transparent ? 0 : 255;
                continue;
            }
            const unsigned sample = samples[form->from[n]];
            pixel[n] =
                depth == 16 ? ScaleSample(sample, 65535U) : static_cast<std::uint8_t>(sample);
            if (depth == 16 && sample % 257 != 0) picture.notes.rounded = true;
        }
        if (opacities) opacities[column] = transparent ? 0 : 255;
    }
}

// Behind the pixels there are only texts and the further pictures of an animation. A wrong checksum
// of the last chunk of pixels is found here as well.
void PngReader::ReadEnd() {
    if (setjmp(png_jmpbuf(png)) == 0)
        png_read_end(png, info);
    else if (problem || (!atEnd && std::strncmp(reason, "IDAT", 4) == 0))
        Fail();
    else
        NoteDamage(picture.notes, atEnd ? "its end is missing" : reason);
    if (problem) Fail(); // libpng leaves out some texts without an error
}

void PngReader::CheckIndices() const {
    if (picture.kind != indexed) return;
    const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    const int highest = *std::max_element<const std::uint8_t*>(picture.pixels.get(), end);
    if (highest >= picture.colors)
        throw Problem("is a damaged PNG picture: a pixel has colour " + std::to_string(highest) +
                      " of a palette of " + std::to_string(picture.colors));
}

void PngReader::FinishTransparency() {
    if (picture.channels.empty()) return;
    std::uint8_t* const opacities = picture.channels[0].bytes.get();
    std::uint8_t* const end = opacities + picture.PixelBytes();
    if (depth <= 8)
        std::transform(picture.pixels.get(), picture.pixels.get() + picture.PixelBytes(), opacities,
                       [this](std::uint8_t index) { return opacityOf[index]; });
    if (std::all_of(opacities, end, [](std::uint8_t opacity) { return opacity == 255; }))
        picture.channels.clear();
}

// Looks at the chunks before the pixels; libpng does not keep later ones.
std::span<const png_unknown_chunk> PngReader::FurtherChunks() const {
    png_unknown_chunkp first = nullptr;
    const int count = png_get_unknown_chunks(png, info, &first);
    return {first, static_cast<std::size_t>(count)};
}

// The picture itself is a frame of the animation when a frame control comes before it.
void PngReader::CountPictures() {
    unsigned frames = 0;
    bool isFrame = false;
    for (const png_unknown_chunk& chunk : FurtherChunks()) {
        if (IsNamed(chunk, "acTL") && chunk.size == 8) frames = png_get_uint_32(chunk.data);
        if (IsNamed(chunk, "fcTL")) isFrame = true;
    }
    const unsigned others = std::min<unsigned>(frames, PNG_UINT_31_MAX - 1) - (isFrame ? 1 : 0);
    if (frames > 0) picture.notes.pictures = static_cast<int>(others + 1);
}

// The first of these chunks that the file has describes the colours.
void PngReader::TakeProfile() {
    using enum InputNotes::ProfileUse;
    InputNotes& notes = picture.notes;
    const bool hasColor = (colorType & PNG_COLOR_MASK_COLOR) != 0;
    const SampleKind samples = hasColor ? SampleKind::color : SampleKind::grey;
    for (const png_unknown_chunk& chunk : FurtherChunks())
        if (IsNamed(chunk, "cICP"))
            return StateCodePoints(notes, {chunk.data, chunk.size}, samples);
    png_charp name = nullptr; // unused: the writing program's name for the profile
    png_bytep bytes = nullptr;
    png_uint_32 count = 0;
    int method = 0, intent = 0;
    if (png_get_iCCP(png, info, &name, &method, &bytes, &count) != 0) {
        notes.profile.assign(bytes, bytes + count);
    } else if (png_get_sRGB(png, info, &intent) != 0) {
        notes.profileUse = same;
        notes.profileName = "sRGB";
    } else if (colorsDoubted) {
        notes.profileUse = unusable;
    } else {
        StateGamma(notes, Gamma(), Points(), samples);
    }
}

std::optional<double> PngReader::Gamma() const {
    double gamma = 0;
    if (png_get_gAMA(png, info, &gamma) == 0) return {};
    return gamma;
}

std::optional<Chromaticities> PngReader::Points() const {
    Chromaticities p = {};
    if (png_get_cHRM(png, info, &p[0], &p[1], &p[2], &p[3], &p[4], &p[5], &p[6], &p[7]) == 0)
        return {};
    return p;
}

int PngReader::Orientation() const {
    png_bytep exif = nullptr;
    png_uint_32 count = 0;
    if (png_get_eXIf_1(png, info, &count, &exif) == 0) return 1;
    return ExifOrientation({exif, count});
}

std::string PngReader::Comment() const {
    png_textp texts = nullptr;
    const int count = png_get_text(png, info, &texts, nullptr);
    for (const char* name : {"Comment", "Description"}) {
        for (const png_text& text : std::span(texts, static_cast<std::size_t>(count))) {
            if (std::strcmp(text.key, name) != 0 || !text.text || !*text.text) continue;
            const bool international = text.compression >= PNG_ITXT_COMPRESSION_NONE;
            return international ? CommentText(text.text) : CommentTextFromLatin1(text.text);
        }
    }
    return {};
}

} // namespace

Picture ReadPng(InputFile& input) {
    return PngReader(input).Read();
}

} // namespace gif89
