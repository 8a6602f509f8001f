#include "ReadPng.h"

#include "CommentText.h"
#include "ExifOrientation.h"
#include "Problem.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <png.h>
#include <span>
#include <utility>

namespace gif89 {

namespace {

// For texts and the like, and more than any row takes. libpng's own limit for chunks only warns,
// and then the length alone makes it ask for, and clear, up to 2 gigabytes.
constexpr png_alloc_size_t kLargestBlock = 8'000'000;

/// Which pixels of the picture one pass brings.
struct Grid {
    int firstRow, firstColumn, rowStep, columnStep;
};
constexpr Grid kWholePicture[] = {{0, 0, 1, 1}};
constexpr Grid kAdam7[] = {{0, 0, 8, 8}, {0, 4, 8, 8}, {4, 0, 8, 4}, {0, 2, 4, 4},
                           {2, 0, 4, 2}, {0, 1, 2, 2}, {1, 0, 2, 1}};

/// What becomes of a colour type.
struct ColorForm {
    int type;
    Picture::Kind kind;
    int samples;             // in the file
    int from[4];             // the file's sample for each byte of a pixel; -1 for opacity by colour
    Picture::Kind keyedKind; // the kind when one colour is declared transparent
};
using enum Picture::Kind;
constexpr ColorForm kColorForms[] = {
    {PNG_COLOR_TYPE_GRAY, indexed, 1, {0}, indexed},
    {PNG_COLOR_TYPE_PALETTE, indexed, 1, {0}, indexed},
    {PNG_COLOR_TYPE_GRAY_ALPHA, rgbAlpha, 2, {0, 0, 0, 1}, rgbAlpha},
    {PNG_COLOR_TYPE_RGB, rgb, 3, {0, 1, 2, -1}, rgbAlpha},
    {PNG_COLOR_TYPE_RGB_ALPHA, rgbAlpha, 4, {0, 1, 2, 3}, rgbAlpha}};

std::uint8_t ReduceTo8Bits(unsigned sample) {
    return static_cast<std::uint8_t>((sample * 255 + 32767) / 65535);
}

/// One reading. libpng reports errors by a jump back into Guard; so whatever owns memory is a
/// member, and the frames that a jump leaves hold only trivial objects.
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
    static png_voidp OnAllocate(png_structp, png_alloc_size_t size);
    static void OnFree(png_structp, png_voidp block) { std::free(block); }
    static void OnRead(png_structp png, png_bytep bytes, std::size_t count);
    bool Fetch(std::uint8_t* bytes, std::size_t count) noexcept;

    void ReadHeader();
    void MakeTarget();
    void SetTable();
    void SetTransparency();
    void ReadRows();
    void PlaceRow(int row, const Grid& grid);
    void CheckIndices() const;
    void FinishTransparency();
    void TakeProfile();
    int Orientation() const;
    std::string Comment() const;

    InputFile& input;
    png_structp png = nullptr;
    png_infop info = nullptr;
    char reason[200] = "";
    std::exception_ptr inputProblem; // thrown by the file, carried around libpng

    png_uint_32 columns = 0, rows = 0;
    int depth = 0, colorType = 0;
    bool interlaced = false;
    bool profileDoubted = false;
    const ColorForm* form = nullptr;
    bool keyed = false;          // pixels of color `key` are transparent
    unsigned key[3] = {};        // at full depth
    std::uint8_t opacityOf[256]; // by index, for indexed pictures of up to 8 bits
    Picture picture;
    std::vector<std::uint8_t> rowBytes; // one row as libpng delivers it
};

PngReader::PngReader(InputFile& file) : input(file) {
    png = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning, nullptr,
                                   OnAllocate, OnFree);
    if (png) info = png_create_info_struct(png);
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        throw Problem("cannot be read: libpng does not start");
    }
    std::memset(opacityOf, 255, sizeof opacityOf);
}

template <typename Step> void PngReader::Guard(Step step) {
    if (setjmp(png_jmpbuf(png)) != 0) Fail();
    step();
}

void PngReader::Fail() const {
    if (inputProblem) std::rethrow_exception(inputProblem);
    if (std::strcmp(reason, "Out of memory") == 0) throw std::bad_alloc();
    throw Problem("is a damaged PNG picture: " + std::string(reason));
}

void PngReader::OnError(png_structp png, png_const_charp message) {
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    std::snprintf(reader->reason, sizeof reader->reason, "%s", message);
    png_longjmp(png, 1);
}

// Warnings open with the name of the chunk. The library drops a damaged profile, and one that is
// not for the picture's color type.
void PngReader::OnWarning(png_structp png, png_const_charp message) {
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    if (std::strncmp(message, "iCCP:", 5) == 0) reader->profileDoubted = true;
}

png_voidp PngReader::OnAllocate(png_structp, png_alloc_size_t size) {
    return size <= kLargestBlock ? std::malloc(size) : nullptr;
}

void PngReader::OnRead(png_structp png, png_bytep bytes, std::size_t count) {
    auto* reader = static_cast<PngReader*>(png_get_io_ptr(png));
    if (!reader->Fetch(bytes, count)) png_error(png, "the file ends before the picture does");
}

bool PngReader::Fetch(std::uint8_t* bytes, std::size_t count) noexcept {
    try {
        return input.Read(bytes, count) == count;
    } catch (...) {
        inputProblem = std::current_exception();
        return false;
    }
}

Picture PngReader::Read() {
    ReadHeader();
    MakeTarget();
    ReadRows();
    Guard([this] { png_read_end(png, info); });
    CheckIndices();
    FinishTransparency();
    DropOpaqueAlpha(picture);
    TakeProfile();
    picture.notes.orientation = Orientation();
    picture.comment = Comment();
    return std::move(picture);
}

void PngReader::ReadHeader() {
    Guard([this] {
        png_set_read_fn(png, this, OnRead);
        // Sides are left to MakePicture, which says more than libpng would. Nothing before it
        // asks for memory by the size of the picture.
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_chunk_malloc_max(png, kLargestBlock); // unpacked
        // By default a damaged tRNS is skipped, and the picture loses its transparency unseen.
        png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
        png_read_info(png, info);
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
    png_get_PLTE(png, info, &entries, &picture.colors); // libpng saw to it that there is one
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

// Pixels that the file stores as we do go straight to their place. libpng is not asked to put
// interlaced pictures together, because it could do so only in a second picture of its own form.
void PngReader::ReadRows() {
    const bool inPlace = !interlaced && depth <= 8 && picture.BytesPerPixel() == form->samples;
    const std::span<const Grid> passes = interlaced ? std::span<const Grid>(kAdam7) : kWholePicture;
    Guard([this, inPlace, passes] {
        for (const Grid& grid : passes) {
            if (grid.firstColumn >= picture.columns) continue; // a pass without pixels has no rows
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
            pixel[n] = depth == 16 ? ReduceTo8Bits(sample) : static_cast<std::uint8_t>(sample);
            if (depth == 16 && sample % 257 != 0) picture.notes.rounded = true;
        }
        if (opacities) opacities[column] = transparent ? 0 : 255;
    }
}

void PngReader::CheckIndices() const {
    if (picture.kind != indexed) return;
    const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    const int highest = *std::max_element<const std::uint8_t*>(picture.pixels.get(), end);
    if (highest >= picture.colors)
        throw Problem("is a damaged PNG picture: a pixel has color " + std::to_string(highest) +
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

void PngReader::TakeProfile() {
    using enum InputNotes::ProfileUse;
    InputNotes& notes = picture.notes;
    png_charp name = nullptr; // chosen by the writing program; the profile has one of its own
    png_bytep bytes = nullptr;
    png_uint_32 count = 0;
    int method = 0, intent = 0;
    if (png_get_iCCP(png, info, &name, &method, &bytes, &count) != 0) {
        notes.profile.assign(bytes, bytes + count);
    } else if (png_get_sRGB(png, info, &intent) != 0) {
        notes.profileUse = same;
        notes.profileName = "sRGB";
    } else if (profileDoubted) {
        notes.profileUse = unusable;
    }
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
